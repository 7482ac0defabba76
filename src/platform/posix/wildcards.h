// Names against patterns with `*` and `?`.
#pragma once

namespace veldt::platform {

bool HasWildcards(const char* text);

/// `*` stands for any characters or none, `?` for one, or for none at the name's end. As users of
/// patterns are used to, a final `.*` also fits a name that has no dot there: `*.*` fits all names.
/// Case counts, as it does in the names.
bool MatchesWildcards(const char* name, const char* pattern);

}  // namespace veldt::platform
