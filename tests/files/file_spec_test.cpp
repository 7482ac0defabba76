#include <gtest/gtest.h>

#include <string>

#include "files/scratch.h"
#include "support/refusing_new.h"

namespace veldt::tests {

namespace {

std::string Name(const char* path) {
    XCString out("what stood here before");
    XFileSpec(XCString(path)).GetName(out);
    return std::string(out, static_cast<std::size_t>(out.GetLength()));
}

std::string Extension(const char* path) {
    XCString out("what stood here before");
    XFileSpec(XCString(path)).GetExtension(out);
    return std::string(out);
}

std::string BareExtension(const std::string& text) {
    XCString name(text.c_str());
    XCString out("what stood here before");
    XFileSpec::GetExtension(name, out);
    return std::string(out);
}

}  // namespace

TEST(FileSpec, NamesStandBehindTheLastBackslash) {
    EXPECT_EQ(Name("C:\\dir\\file.txt"), "file.txt");
    EXPECT_EQ(Name("file.txt"), "");
    EXPECT_EQ(Name("C:\\dir\\"), "dir\\");
    EXPECT_EQ(Name("C:\\"), "");
    EXPECT_EQ(Name("\\"), "");
    EXPECT_EQ(Name("\\a"), "a");
    EXPECT_EQ(Name(""), "");
    EXPECT_EQ(Name("C:/dir/file.txt"), "");

    const std::string longName = std::string(255, 'a') + std::string(45, 'b');
    XStr<255> out("what stood here before");
    XFileSpec(XCString(("C:\\" + longName).c_str())).GetName(out);
    EXPECT_EQ(std::string(out.GetCStr()), longName.substr(0, 255));
    EXPECT_EQ(out.GetLength(), 255);
    XFileSpec(XCString("file")).GetName(out);
    EXPECT_EQ(out.IsEmpty(), 1);
}

TEST(FileSpec, ExtensionsStandBehindTheFirstDotOfTheName) {
    EXPECT_EQ(Extension("C:\\dir\\archive.tar.gz"), "tar.gz");
    EXPECT_EQ(Extension("C:\\d.ir\\archive"), "");
    EXPECT_EQ(Extension("C:\\dir\\file."), "");
    EXPECT_EQ(Extension("C:\\dir\\.profile.txt"), "");
    EXPECT_EQ(Extension("file.txt"), "");
    EXPECT_EQ(BareExtension("file.txt"), "txt");
    EXPECT_EQ(BareExtension(""), "");
    EXPECT_EQ(BareExtension(std::string(32767, 'a') + ".txt"), "txt");
    EXPECT_EQ(BareExtension(std::string(32768, 'a') + ".txt"), "");
}

TEST(FileSpec, PathsAreKeptAsTheyCome) {
    XFileSpec spec(XCString("C:\\dir"));
    spec.Append("file.txt");
    spec.Append(nullptr);
    XCString out;
    spec.GetPath(out, 0);
    EXPECT_STREQ(out, "C:\\dirfile.txt");
    EXPECT_EQ(static_cast<const char*>(out), static_cast<const char*>(spec.GetNativeFileSpec()));
    spec.GetPosixStylePath(out);
    EXPECT_STREQ(out, "/C:/dirfile.txt");
    XFileSpec().GetPosixStylePath(out);
    EXPECT_STREQ(out, "/");
}

TEST(FileSpec, AQueryMayAnswerIntoThePathItself) {
    XFileSpec spec(XCString("C:\\dir\\file.txt"));
    spec.GetName(spec.GetNativeFileSpec());
    EXPECT_STREQ(spec.GetNativeFileSpec(), "file.txt");
    spec.GetPosixStylePath(spec.GetNativeFileSpec());
    EXPECT_STREQ(spec.GetNativeFileSpec(), "/file.txt");
}

TEST(FileSpec, ExistsFindsFilesDirectoriesAndMatches) {
    const Scratch scratch;
    scratch.Fill("file.txt", "");
    const auto exists = [&](const std::string& name) {
        return XFileSpec(XCString(scratch.Path(name).c_str())).Exists();
    };
    EXPECT_EQ(exists("file.txt"), 1);
    EXPECT_EQ(exists(""), 1);
    EXPECT_EQ(exists("*.txt"), 1);
    EXPECT_EQ(exists("f??e.*"), 1);
    EXPECT_EQ(exists("*.dat"), 0);
    EXPECT_EQ(exists("other"), 0);
    EXPECT_EQ(exists("file.txt\\"), 0);
    EXPECT_EQ(exists("none\\*"), 0);
    EXPECT_EQ(XFileSpec(XCString("C:\\")).Exists(), 1);
    EXPECT_EQ(XFileSpec(XCString(".")).Exists(), 1);
    EXPECT_EQ(XFileSpec(XCString("Q:\\")).Exists(), 0);

    platform::SetLastError(42);
    EXPECT_EQ(XFileSpec().Exists(), 0);
    EXPECT_EQ(platform::GetLastError(), 42u) << "an empty path was looked for";
}

// Whichever request for memory is refused, the path and a result of before stay whole.
TEST(FileSpec, RefusedMemoryLeavesWholeObjects) {
    bool happened = true;
    for (long nth = 1; happened; ++nth) {
        XFileSpec spec(XCString("C:\\dir\\file.tar.gz"));
        XCString name("before");
        XCString path("before");
        XCString extension("before");
        {
            const RefusedNew refusal(nth);
            try {
                spec.GetName(name);
                spec.GetPath(path, 1);
                spec.GetExtension(extension);
                spec.Append("!");
            } catch (const std::bad_alloc&) {
            }
            happened = refusal.Happened();
        }
        EXPECT_TRUE(name == "before" || name == "file.tar.gz");
        EXPECT_TRUE(path == "before" || path == "/C:/dir/file.tar.gz");
        EXPECT_TRUE(extension == "before" || extension == "tar.gz");
        EXPECT_STREQ(spec.GetNativeFileSpec(),
                     happened ? "C:\\dir\\file.tar.gz" : "C:\\dir\\file.tar.gz!");
    }
}

}  // namespace veldt::tests
