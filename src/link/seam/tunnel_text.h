// The text that opens an Ethernet tunnel: TNLC="TRANSPORT","IP","BUS","DEVICE","0".
#pragma once

#include <string_view>

namespace ruvo {

inline constexpr std::string_view kTunnelPrefix = "TNLC=";
inline constexpr std::string_view kTunnelTransport = "RPCDll.Dll";

} // namespace ruvo
