// An error log in a folder of its own.
#pragma once

#include "support/fake_system.h"
#include "support/scratch_folder.h"

#include "config/run_context.h"
#include "log/connection_details.h"
#include "log/error_log.h"

#include <gtest/gtest.h>

namespace ruvo {

class CErrorLog : public testing::Test {
protected:
    CErrorLog() {
        ResetErrorLog();
        ResetConnectionDetails();
        g_debugOutput.clear();
        g_standardError.clear();
        g_localTime = SCalendarTime{2024, 3, 5, 14, 7, 9};
    }
    static std::string UseLog(const std::string& path, bool given = true,
                              const std::string& registryRoot = "", bool loaded = true) {
        SRuvoConfigFields fields;
        fields.errorLogPath = path;
        fields.errorLogPathGiven = given;
        CRunContext context;
        context.Config() = CRuvoConfig(fields);
        context.SetDestinationRoot(registryRoot);
        context.SetDestinationFromRegistry(!registryRoot.empty());
        ResolveErrorLogPath(context, loaded);
        return ErrorLogPath();
    }
    CScratchFolder m_folder;
};

} // namespace ruvo
