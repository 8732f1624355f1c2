// Day files of some relays, half of them with records of the one form and half with the other.
#pragma once

#include "instant_server.h"
#include "support/scratch_folder.h"

#include "extraction/relay_visit.h"
#include "link/client.h"

#include <cstddef>

namespace ruvo::bench {

inline void FillTree(const CScratchFolder& folder, int relays, std::size_t eventsPerRelay) {
    CP32Wrap::CreateInstance();
    CInstantServer& server = InstantServer();
    server.pendingPerPort = eventsPerRelay;
    for (int relay = 0; relay < relays; ++relay) {
        CP32Wrap::GetInstance()->OpenPort(nullptr, "", "");
        server.form = relay % 2 == 0 ? EEventForm::Simple : EEventForm::Extended;
        ExtractEventsToFile(5, folder.Path("ev"), kNoEventLimit);
    }
    CP32Wrap::DestroyInstance();
}

} // namespace ruvo::bench
