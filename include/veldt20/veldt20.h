// The whole exported interface.
#pragma once

#include <veldt20/collections.h>
#include <veldt20/files.h>
#include <veldt20/geometry.h>
#include <veldt20/memory.h>
#include <veldt20/numerics.h>
#include <veldt20/strings.h>
#include <veldt20/utilities.h>
#if VELDT20_HAS_HOST
#include <veldt20/host.h>
#endif
