#include <gtest/gtest.h>

#include <string>

#include "files/scratch.h"

namespace veldt::tests {

/// A terminator that was taken along would not show in the text alone.
std::string Whole(const XCString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

TEST(FileSpec, TakesPathsApart) {
    const struct {
        std::string path, name, extension;
    } cases[] = {
        {"C:\\dir\\archive.tar.gz", "archive.tar.gz", "tar.gz"},
        {"C:\\d.ir\\archive", "archive", ""},
        {"C:\\dir\\file.", "file.", ""},
        {"C:\\dir\\.profile.txt", ".profile.txt", ""},
        {"file.txt", "", ""},
        {"C:/dir/file.txt", "", ""},
        {"C:\\dir\\", "dir\\", ""},
        {"C:\\", "", ""},
        {"\\", "", ""},
        {"\\a", "a", ""},
        {"", "", ""},
        {"\\" + std::string(32767, 'a') + ".b", std::string(32767, 'a') + ".b", "b"},
        {"\\" + std::string(40000, 'a') + ".b", std::string(40000, 'a') + ".b", ""},
    };
    for (const auto& row : cases) {
        const XFileSpec spec(XCString(row.path.c_str()));
        XCString name("what stood here before"), extension(name);
        XStr<255> cut(name);
        spec.GetName(name);
        spec.GetName(cut);
        spec.GetExtension(extension);
        EXPECT_EQ(Whole(name), row.name);
        EXPECT_EQ(cut.GetCStr(), row.name.substr(0, 255));
        EXPECT_EQ(Whole(extension), row.extension);
    }
    XCString name("file.txt");
    XFileSpec::GetExtension(name, name);
    EXPECT_STREQ(name, "txt");
}

TEST(FileSpec, KeepsPathsAsTheyCome) {
    XFileSpec spec, other;
    spec.SetNativeFileSpec(XCString("C:\\dir"));
    spec.Append("file.txt");
    spec.Append(nullptr);
    const XFileSpec copy(spec);
    other = copy;
    XCString out;
    other.GetPath(out, 0);
    EXPECT_STREQ(out, "C:\\dirfile.txt");
    EXPECT_EQ(static_cast<const char*>(out), static_cast<const char*>(copy.GetNativeFileSpec()));
    spec.GetPosixStylePath(spec.GetNativeFileSpec());
    EXPECT_STREQ(spec.GetNativeFileSpec(), "/C:/dirfile.txt");
    XFileSpec().GetPosixStylePath(out);
    EXPECT_STREQ(out, "/");
}

TEST(FileSpec, ExistsFindsFilesDirectoriesAndMatches) {
    const Scratch scratch;
    scratch.Fill("file.txt", "");
    for (const std::string& path :
         {scratch.Path("file.txt"), scratch.Path(""), scratch.Path("*.txt"), scratch.Path("f??e.*"),
          std::string("C:\\"), std::string(".")}) {
        EXPECT_EQ(XFileSpec(XCString(path.c_str())).Exists(), 1) << path;
    }
    for (const std::string& path : {scratch.Path("*.dat"), scratch.Path("file.txt\\"),
                                    scratch.Path("none\\*"), std::string("Q:\\")}) {
        EXPECT_EQ(XFileSpec(XCString(path.c_str())).Exists(), 0) << path;
    }
}

}  // namespace veldt::tests
