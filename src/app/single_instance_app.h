// An application of which one instance may run at a time.
#pragma once

#include "platform/single_instance.h"

#include <string>

namespace ruvo {

class CSingleInstanceApp {
public:
    CSingleInstanceApp();
    CSingleInstanceApp(const CSingleInstanceApp&) = delete;
    CSingleInstanceApp& operator=(const CSingleInstanceApp&) = delete;
    virtual ~CSingleInstanceApp() = default;

protected:
    /// The executable's base name.
    const std::string& ApplicationName() const { return m_applicationName; }
    /// Claims the marker until the process ends; false when another instance holds it, or when it cannot be
    /// made, which a message box then says.
    bool ClaimSingleInstance();

private:
    std::string m_applicationName;
    std::string m_instanceName;
    CInstanceMarker m_marker;
};

} // namespace ruvo
