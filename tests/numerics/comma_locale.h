// A locale whose decimal mark is a comma.
#pragma once

/// Makes it the process's LC_NUMERIC.
void SetCommaLocale();
