// The file gputune.dll itself: what it exports, how large it is, and what it says of itself. What it imports and how it
// is protected: tests/hardening.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "boards.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

constexpr bool kFor64Bits = sizeof(void*) == 8;

// The file as it lies on disk, found by the addresses it will have in memory.
class Image {
public:
    explicit Image(std::filesystem::path const& path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }

    std::size_t Size() const { return bytes_.size(); }

    IMAGE_NT_HEADERS Headers() const {
        return Read<IMAGE_NT_HEADERS>(static_cast<DWORD>(Read<IMAGE_DOS_HEADER>(0).e_lfanew));
    }
    IMAGE_DATA_DIRECTORY Directory(int index) const { return Headers().OptionalHeader.DataDirectory[index]; }

    std::vector<IMAGE_SECTION_HEADER> Sections() const {
        IMAGE_NT_HEADERS const headers = Headers();
        DWORD const first = static_cast<DWORD>(Read<IMAGE_DOS_HEADER>(0).e_lfanew) +
                            static_cast<DWORD>(offsetof(IMAGE_NT_HEADERS, OptionalHeader)) +
                            headers.FileHeader.SizeOfOptionalHeader;
        std::vector<IMAGE_SECTION_HEADER> sections;
        for (DWORD index = 0; index < headers.FileHeader.NumberOfSections; ++index) {
            sections.push_back(Read<IMAGE_SECTION_HEADER>(first + index * DWORD{sizeof(IMAGE_SECTION_HEADER)}));
        }
        return sections;
    }

    // Names of more than eight characters stand in a table behind the symbols.
    std::string NameOf(IMAGE_SECTION_HEADER const& section) const {
        char name[IMAGE_SIZEOF_SHORT_NAME + 1] = {};
        std::memcpy(name, section.Name, IMAGE_SIZEOF_SHORT_NAME);
        if (name[0] != '/') {
            return name;
        }
        IMAGE_FILE_HEADER const header = Headers().FileHeader;
        DWORD const table = header.PointerToSymbolTable + header.NumberOfSymbols * DWORD{IMAGE_SIZEOF_SYMBOL};
        return TextAtOffset(table + std::stoul(name + 1));
    }

    template <class Record>
    Record At(DWORD address) const {
        return Read<Record>(OffsetOf(address));
    }
    std::string TextAt(DWORD address) const { return TextAtOffset(OffsetOf(address)); }

private:
    template <class Record>
    Record Read(DWORD offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record)) {
            throw std::out_of_range("beyond the end of the file");
        }
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return record;
    }

    std::string TextAtOffset(DWORD offset) const {
        auto const begin = bytes_.begin() + static_cast<std::ptrdiff_t>(offset);
        return std::string(begin, std::find(begin, bytes_.end(), '\0'));
    }

    DWORD OffsetOf(DWORD address) const {
        for (IMAGE_SECTION_HEADER const& section : Sections()) {
            if (address >= section.VirtualAddress && address - section.VirtualAddress < section.SizeOfRawData) {
                return address - section.VirtualAddress + section.PointerToRawData;
            }
        }
        throw std::out_of_range("in no section");
    }

    std::vector<char> bytes_;
};

TEST(Image, IsALibraryOfThisWidth) {
    Image const image(sim::ModulePath(LibraryUnderTest()));
    IMAGE_NT_HEADERS const headers = image.Headers();
    EXPECT_EQ(headers.Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE));
    EXPECT_EQ(headers.FileHeader.Machine, kFor64Bits ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386);
    EXPECT_TRUE(headers.FileHeader.Characteristics & IMAGE_FILE_DLL);
    EXPECT_EQ(headers.OptionalHeader.Magic, kFor64Bits ? IMAGE_NT_OPTIONAL_HDR64_MAGIC : IMAGE_NT_OPTIONAL_HDR32_MAGIC);
    // The same source makes the same file.
    EXPECT_EQ(headers.FileHeader.TimeDateStamp, 0U);
}

TEST(Image, ExportsItsNamesInByteOrder) {
    Lines names = {
        "FetchHwmValues",
        "GetActiveAdapterIndex",
        "GetExternalPerformanceParameter",
        "GetFanSetting",
        "GetFrameRate",
        "GetGpuClockSetting",
        "GetHwmValue",
        "GetMemClockSetting",
        "GetPowerLimitSetting",
        "GetVGAInfo",
        "GetVendorInfo",
        "InitVGAHelper",
        "IsInitOk",
        "SetActiveAdapterIndex",
        "SetFanSpeed",
        "SetFanSpeedTable",
        "SetPerformanceDefault",
        "SetPerformanceOC",
        "SetPerformanceSilent",
        "SetPerformanceUser",
        "SetPowerLimit",
        "SetPowerLimitDefault",
    };
    ASSERT_EQ(names.size(), 22U);
    Lines const forwarded = {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
    };
    ASSERT_EQ(forwarded.size(), 95U);
    names.insert(names.end(), forwarded.begin(), forwarded.end());
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names.size(), 117U);

    Image const image(sim::ModulePath(LibraryUnderTest()));
    IMAGE_DATA_DIRECTORY const directory = image.Directory(IMAGE_DIRECTORY_ENTRY_EXPORT);
    auto const exports = image.At<IMAGE_EXPORT_DIRECTORY>(directory.VirtualAddress);
    EXPECT_EQ(image.TextAt(exports.Name), "gputune.dll");
    EXPECT_EQ(exports.Base, 1U);
    EXPECT_EQ(exports.NumberOfFunctions, names.size());
    ASSERT_EQ(exports.NumberOfNames, names.size());
    for (DWORD index = 0; index < exports.NumberOfNames; ++index) {
        EXPECT_EQ(image.TextAt(image.At<DWORD>(exports.AddressOfNames + index * 4)), names[index]);
        // The ordinal less the base.
        EXPECT_EQ(image.At<WORD>(exports.AddressOfNameOrdinals + index * 2), index);
        DWORD const function = image.At<DWORD>(exports.AddressOfFunctions + index * 4);
        EXPECT_NE(function, 0U);
        bool const forwards =
            function >= directory.VirtualAddress && function - directory.VirtualAddress < directory.Size;
        EXPECT_FALSE(forwards);
        EXPECT_EQ(::GetProcAddress(LibraryUnderTest(), MAKEINTRESOURCEA(index + 1)),
                  ::GetProcAddress(LibraryUnderTest(), names[index].c_str()));
    }
}

TEST(Image, IsSmallAndCarriesNoDebugInformation) {
    Image const image(sim::ModulePath(LibraryUnderTest()));
    EXPECT_LE(image.Size(), 400U * 1024);
    EXPECT_EQ(image.Headers().FileHeader.NumberOfSymbols, 0U);
    EXPECT_EQ(image.Directory(IMAGE_DIRECTORY_ENTRY_DEBUG).Size, 0U);
    ASSERT_FALSE(image.Sections().empty());
    for (IMAGE_SECTION_HEADER const& section : image.Sections()) {
        std::string const name = image.NameOf(section);
        EXPECT_FALSE(name.starts_with(".debug") || name.starts_with(".zdebug") || name.starts_with(".stab")) << name;
    }
}

TEST(Image, CarriesAVersionBlock) {
    HMODULE const library = LibraryUnderTest();
    HRSRC const found = ::FindResourceW(library, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16));  // RT_VERSION
    ASSERT_NE(found, nullptr);
    DWORD const size = ::SizeofResource(library, found);
    auto const* const bytes = static_cast<unsigned char const*>(::LockResource(::LoadResource(library, found)));
    ASSERT_NE(bytes, nullptr);

    // The words of the block; its texts are in UTF-16.
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes, text.size() * sizeof(wchar_t));
    EXPECT_NE(text.find(L"VS_VERSION_INFO"), std::wstring::npos);
    EXPECT_NE(text.find(L"gputune.dll"), std::wstring::npos);
    for (wchar_t const* field : {L"FileVersion", L"ProductVersion", L"FileDescription", L"OriginalFilename"}) {
        EXPECT_NE(text.find(field), std::wstring::npos);
    }
    constexpr unsigned char kSignature[] = {0xBD, 0x04, 0xEF, 0xFE};
    unsigned char const* const fixedPart =
        std::search(bytes, bytes + size, std::begin(kSignature), std::end(kSignature));
    ASSERT_LE(fixedPart + sizeof(VS_FIXEDFILEINFO), bytes + size);
    VS_FIXEDFILEINFO version;
    std::memcpy(&version, fixedPart, sizeof version);
    EXPECT_EQ(version.dwFileType, static_cast<DWORD>(VFT_DLL));
    EXPECT_TRUE(version.dwFileVersionMS != 0 || version.dwFileVersionLS != 0);
}

TEST(Image, ImportLibraryLiesBesideIt) {
    std::filesystem::path const directory = sim::ModulePath(LibraryUnderTest()).parent_path();
    std::filesystem::path const libraries =
        kFor64Bits ? directory.parent_path().parent_path() / "lib" / "x64" : directory.parent_path() / "lib";
    std::filesystem::path const mingw = libraries / "libgputune.dll.a";
    ASSERT_TRUE(std::filesystem::exists(mingw));
    std::ifstream file(mingw, std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    EXPECT_TRUE(bytes.starts_with("!<arch>\n"));
    // The names as a C compiler decorates them, and the pointers that a dllimport declaration takes.
    std::string const name = kFor64Bits ? "InitVGAHelper" : "_InitVGAHelper";
    EXPECT_NE(bytes.find('\0' + name + '\0'), std::string::npos);
    EXPECT_NE(bytes.find("__imp_" + name), std::string::npos);
    EXPECT_EQ(bytes.find("InitVGAHelper@"), std::string::npos);
}

}  // namespace
}  // namespace gputune::test
