#pragma once

#include <cstdarg>

// One function of C is declared outside the header's own extern "C".
extern "C" {
#include <alsa/error.h>
}

#include <alsa/asoundlib.h>
