// An XCString whose header and workers a test can reach.
#pragma once

#include <veldt20/strings.h>

namespace veldt::tests {

class OpenString : public XCString {
  public:
    using XCString::AllocCopy;
    using XCString::ConcatCopy;
    using XCString::GetData;
    using XCString::operator=;
    using XCString::XCString;
    OpenString(const XCString& source) : XCString(source) {}
    OpenString(const OpenString&) = default;
    OpenString& operator=(const OpenString&) = default;
};

}  // namespace veldt::tests
