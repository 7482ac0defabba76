// What a program on the exported headers alone needs of the platform, off Windows.
#pragma once

#include <veldt20/host.h>

inline void ClearPendingError() {}
