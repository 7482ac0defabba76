// The platform's points and rectangles, as a host that is not Windows gets them.
#pragma once

#include <veldt20/host.h>
