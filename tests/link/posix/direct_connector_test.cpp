// The connector of a server that is a module in this process. This program has the scripted server's in its
// place; here, and nowhere else, it goes by another name.
#define ConnectToServer ConnectDirectly
#include "link/seam/direct_connector.cpp"
#undef ConnectToServer

#include "support/fake_system.h"
#include "support/scripted_server.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ruvo {

std::unique_ptr<IServerConnection> ConnectToServer(); // the scripted server's

static SLoadedServer g_loaded;
static int g_ends = 0;

// In the place of what looks for the module's file and loads it.
SServerPlace FindServerModule() {
    return {"C:\\p32ls.dll", ""};
}
SLoadedServer LoadServerModule(const std::string& path, CModule& /*module*/) {
    EXPECT_EQ(path, "C:\\p32ls.dll");
    return g_loaded;
}
std::string SystemModulePath(const std::string& path) {
    return "system's " + path;
}

TEST(DirectConnector, LetsTheServerGoAndTellsWhyThereIsNone) {
    const SServerModule table{kServerInterfaceVersion, [] { return ConnectToServer().release(); },
                              [](IServerConnection* connection) {
                                  delete connection;
                                  ++g_ends;
                                  throw std::runtime_error("a module that fails");
                              }};
    g_loaded.table = &table;
    g_debugOutput.clear();
    test::CScriptedServer server;
    auto connection = ConnectDirectly();
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(&connection->Server(), &server);
    EXPECT_THROW(connection->Unadvise(6), std::logic_error) << "the server hears of a foreign cookie";
    connection.reset();
    EXPECT_EQ(std::to_string(g_ends) + g_debugOutput, "1");
    server.refuseConnection = true;
    EXPECT_EQ(ConnectDirectly(), nullptr);
    g_loaded = {nullptr, "p32ls.so: no such file"};
    EXPECT_EQ(ConnectDirectly(), nullptr);
    EXPECT_EQ(g_ends, 1);
    const std::string head = " *** [ PARLANE QTV ERR  ] Comms server: ";
    EXPECT_EQ(g_debugOutput, head + "system's C:\\p32ls.dll: loaded, but it refused to start\n" + head +
                                 "p32ls.so: no such file\n");
}

} // namespace ruvo
