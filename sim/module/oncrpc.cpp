// The stand-in for the RPC library, for machines without one. The program only checks that the library can be
// loaded: the tunnel that would use it is simulated by p32ls.so. There is nothing in it to call.
namespace {
[[maybe_unused]] const char kName[] = "oncrpc stand-in of the simulated comms server";
} // namespace
