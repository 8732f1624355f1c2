// What most tests above the comms server begin with: a scripted server, and the client that talks to it.
#pragma once

#include "support/contains.h"
#include "support/fake_system.h"
#include "support/scripted_server.h"

#include "link/client.h"

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

} // namespace ruvo::test
