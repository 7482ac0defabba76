#include <clocale>

#include "numerics/comma_locale.h"

void SetCommaLocale() {
    std::setlocale(LC_NUMERIC, "German");
}
