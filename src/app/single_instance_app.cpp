#include "app/single_instance_app.h"

#include "paths/path_utilities.h"
#include "platform/message_box.h"
#include "platform/modules.h"

namespace ruvo {

CSingleInstanceApp::CSingleInstanceApp()
    : m_applicationName(SplitPath(ProgramPath()).name),
      m_instanceName(m_applicationName + ":3B38A5F0-71B0-11d3-9C2B-00600816C2BE" + "HX") {}

bool CSingleInstanceApp::ClaimSingleInstance() {
    switch (m_marker.Claim(m_instanceName)) {
    case EInstanceClaim::Claimed:
        return true;
    case EInstanceClaim::AlreadyRunning:
        return false;
    case EInstanceClaim::MarkerFailed:
        ShowMessageBox(EMessageIcon::Error, m_applicationName, "Failed to create Mutex!");
        return false;
    case EInstanceClaim::WindowClassFailed:
        ShowMessageBox(EMessageIcon::Error, m_applicationName, "Failed to register window class!");
        return false;
    }
    return false;
}

} // namespace ruvo
