// Arrays and lists that know nothing of what they hold.
#pragma once

#include <veldt20/intrusive_list.h>
#include <veldt20/pointer_list.h>
