#pragma once

// xkb.h names a structure field "explicit", a C++ keyword; C++ users of the
// header rename it while including it.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
