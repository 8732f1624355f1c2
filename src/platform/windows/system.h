// The system's own header, without its rarely used parts and without its min and max. Included by
// the files of this folder alone: its macros rename functions of ours.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
