#pragma once

#include <veldt20/export.h>
