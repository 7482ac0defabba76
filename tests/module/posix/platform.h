// What a program on the module alone needs of the platform, off Windows.
#pragma once

#include <veldt20/host.h>

inline void ClearPendingError() {}
