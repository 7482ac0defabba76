// The DLL's version resource, as an installer reads it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform.h"

namespace {

TEST(VersionResource, NamesTheProductAndItsVersion) {
    DWORD ignored = 0;
    std::vector<char> data(GetFileVersionInfoSizeA("VELDT20.dll", &ignored));
    const auto size = static_cast<DWORD>(data.size());
    ASSERT_NE(GetFileVersionInfoA("VELDT20.dll", 0, size, data.data()), 0);
    const auto find = [&](const std::string& path) {
        void* found = nullptr;
        UINT length = 0;
        EXPECT_NE(VerQueryValueA(data.data(), path.c_str(), &found, &length), 0) << path;
        return static_cast<const char*>(found);
    };
    const auto text = [&](const std::string& name) {
        const char* const found = find("\\StringFileInfo\\040904b0\\" + name);
        return std::string(found != nullptr ? found : "");
    };
    EXPECT_EQ(text("ProductName"), "Tessera Library");
    EXPECT_EQ(text("InternalName"), "VELDT20");
    EXPECT_EQ(text("OriginalFilename"), "VELDT20.dll");
    EXPECT_EQ(text("FileVersion"), VELDT20_PROJECT_VERSION);
    EXPECT_EQ(text("ProductVersion"), VELDT20_PROJECT_VERSION);

    const auto* const fixed = reinterpret_cast<const VS_FIXEDFILEINFO*>(find("\\"));
    ASSERT_NE(fixed, nullptr);
    const std::string version = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                                std::to_string(HIWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(version, VELDT20_PROJECT_VERSION);
    EXPECT_EQ(fixed->dwProductVersionMS, fixed->dwFileVersionMS);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
}

}  // namespace
