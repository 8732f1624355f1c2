// What most tests above the comms server begin with: a scripted server, and the client that talks to it.
#pragma once

#include "support/contains.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "link/client.h"
#include "link/recording/recorded_connection.h"
#include "model/status/progress.h"

#include <gtest/gtest.h>

namespace ruvo::test {

class LinkedTest : public testing::Test {
protected:
    LinkedTest() {
        g_debugOutput.clear();
        EXPECT_EQ(CP32Wrap::CreateInstance(), kLinkGood);
        link = CP32Wrap::GetInstance();
        link->SetDeviceAddress(200);
    }
    ~LinkedTest() override { CP32Wrap::DestroyInstance(); }

    CScriptedServer server;
    CP32Wrap* link = nullptr;
};

/// Plans a recording, before the client of the fixture behind it connects.
struct SPlannedRecording {
    SPlannedRecording() { PlannedRecording().path = folder.Path("calls.rec"); }
    ~SPlannedRecording() { PlannedRecording() = {}; }
    CScratchFolder folder;
};

/// Notes what is reported.
struct CProgressRecorder final : CProgressMonitor {
    CProgressRecorder() : CProgressMonitor(nullptr, 0, 100) {}
    void SetPercent(int percent) override { percents.push_back(percent); }
    std::vector<int> percents;
};

} // namespace ruvo::test
