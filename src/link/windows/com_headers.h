// The system's COM headers and the comms server's interfaces made from p32ls.idl. Outside of namespace ruvo
// the names IP32ls and IP32lsSink_v2 are the COM interfaces, inside it those of the seam.
#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <ole2.h>
#include <olectl.h>

#include <p32ls.h>
