// From the platform's error numbers to the errors of XFile.
#pragma once

#include <veldt20/files.h>

#include "platform/platform.h"

namespace veldt::files {

XFile::Error MapPlatformError(platform::DWORD error);

}  // namespace veldt::files
