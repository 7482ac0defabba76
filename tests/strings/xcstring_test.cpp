// XCString: who shares a buffer with whom, and what each operation leaves of text and capacity.
#include <gtest/gtest.h>
#include <veldt20/strings.h>

namespace {

/// The workers and the header, for tests.
class OpenString : public XCString {
  public:
    using XCString::GetData;
    using XCString::XCString;

    explicit OpenString(const XCString& source) : XCString(source) {}
    using XCString::operator=;
};

TEST(XCString, EmptyOnesShareOneBuffer) {
    const XCString a;
    const XCString b(a);
    const XCString none(nullptr, -1);
    const XCString zero("abc", 0);
    for (const XCString* s : {&a, &b, &none, &zero}) {
        EXPECT_EQ(static_cast<const char*>(*s), static_cast<const char*>(XGetEmptyString()));
        EXPECT_EQ(s->GetAllocLength(), 0);
        EXPECT_EQ(s->IsEmpty(), 1);
    }
}

TEST(XCString, CopiesShareUntilOneIsWritten) {
    OpenString a("hello");
    OpenString b(static_cast<const XCString&>(a));
    EXPECT_EQ(static_cast<const char*>(a), static_cast<const char*>(b));
    EXPECT_EQ(a.GetData()->refCount, 2);
    b.SetAt(0, 'J');
    EXPECT_STREQ(a, "hello");
    EXPECT_STREQ(b, "Jello");
    EXPECT_EQ(b.GetAllocLength(), 5);
    EXPECT_EQ(a.GetData()->refCount, 1);
}

}  // namespace
