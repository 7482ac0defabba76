// Arrays and lists that know nothing of what they hold.
#pragma once

#include <veldt20/collections_growable_array.h>
#include <veldt20/collections_handle_array.h>
#include <veldt20/collections_intrusive_list.h>
#include <veldt20/collections_pointer_list.h>
