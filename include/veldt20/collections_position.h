// A place in a list, as a caller holds it.
#pragma once

/// Opaque: a `__XPOSITION*` comes from a list, goes back to that list, and is never looked into.
/// Null is no position. It stays valid until what it names is removed from the list.
struct __XPOSITION;
