// The DLL's version resource, as an installer reads it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform.h"

namespace {

class VersionResource : public testing::Test {
  protected:
    void SetUp() override {
        DWORD ignored = 0;
        data_.resize(GetFileVersionInfoSizeA("VELDT20.dll", &ignored));
        ASSERT_FALSE(data_.empty());
        ASSERT_NE(
            GetFileVersionInfoA("VELDT20.dll", 0, static_cast<DWORD>(data_.size()), data_.data()),
            0);
    }

    std::string Text(const std::string& name) {
        void* text = nullptr;
        UINT length = 0;
        const std::string path = "\\StringFileInfo\\040904b0\\" + name;
        return VerQueryValueA(data_.data(), path.c_str(), &text, &length) != 0
                   ? static_cast<const char*>(text)
                   : "(none)";
    }

    std::vector<char> data_;
};

TEST_F(VersionResource, NamesTheProductAndItsVersion) {
    EXPECT_EQ(Text("ProductName"), "Tessera Library");
    EXPECT_EQ(Text("InternalName"), "VELDT20");
    EXPECT_EQ(Text("OriginalFilename"), "VELDT20.dll");
    EXPECT_EQ(Text("FileVersion"), VELDT20_PROJECT_VERSION);
    EXPECT_EQ(Text("ProductVersion"), VELDT20_PROJECT_VERSION);

    void* found = nullptr;
    UINT length = 0;
    ASSERT_NE(VerQueryValueA(data_.data(), "\\", &found, &length), 0);
    const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    const std::string version = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(HIWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(version, VELDT20_PROJECT_VERSION);
    EXPECT_EQ(fixed->dwProductVersionMS, fixed->dwFileVersionMS);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
}

}  // namespace
