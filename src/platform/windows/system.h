// The system's own header, without the parts that nobody here uses and without its min and max. Included by
// the files of this folder alone: its macros rename what they please.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
