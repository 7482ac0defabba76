// The exported calls on plain bytes. Moving, filling and comparing are the C library's, which must
// not be handed an invalid address even for a count of 0.
#include <veldt20/bytes.h>

#include <cstring>

#include "memory/byte_logic.h"

using namespace veldt::memory;

void XBlockMove(const void* source, void* destination, unsigned int count) {
    if (count > 0) {
        std::memmove(destination, source, count);
    }
}

void XBlockClear(void* block, unsigned int count) {
    if (count > 0) {
        std::memset(block, 0, count);
    }
}

void XMemSet(char* block, char value, unsigned int count) {
    if (count > 0) {
        std::memset(block, value, count);
    }
}

int XBlockEqual(const void* a, const void* b, unsigned int count) {
    return count == 0 || std::memcmp(a, b, count) == 0;
}

void XMemSetOr(void* target, const void* mask, unsigned int count) {
    OrBytes(target, mask, count, WidestVectors());
}

void XMemSetAnd(void* target, const void* mask, unsigned int count) {
    AndBytes(target, mask, count, WidestVectors());
}

void XMemSetXor(void* target, const void* mask, unsigned int count) {
    XorBytes(target, mask, count, WidestVectors());
}
