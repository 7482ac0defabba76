// How many rounds the random runs over numbers make.
#pragma once

namespace veldt::tests {

/// What the program of long runs was asked for, or 0.
inline int wantedRounds = 0;

inline int Rounds(int usual) {
    return wantedRounds > 0 ? wantedRounds : usual;
}

}  // namespace veldt::tests
