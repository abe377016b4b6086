// What the tool's check finds in a profile file, and where.
#include <gtest/gtest.h>

#include <tinyxml2.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "profile/profile_reader.h"
#include "tool/profile/NumberCheck.h"
#include "tool/profile/ProfileCheck.h"

namespace gputune::tool {
namespace {

// All problems, a line each.
std::string Check(std::string_view text) {
    std::string all;
    for (Problem const& problem : CheckProfile(text)) {
        all += FormatProblem("f", problem) + '\n';
    }
    return all;
}

// The six rows without which an entry is incomplete, but for those whose names are given.
std::string Rows(std::string const& without = "") {
    std::string rows;
    for (std::string const name : {"GpuOC", "MemOC", "PowerOC", "GpuSilent", "MemSilent", "PowerSilent"}) {
        if (name != without) {
            rows += "<V Name=\"" + name + "\" Normal=\"1\"/>\n";
        }
    }
    return rows;
}

// A file whose second line is `line`, in a board entry with all rows but `without` behind it.
std::string CheckLine(std::string const& line, std::string const& without = "",
                      std::string const& entry = "Id=\"1F\"") {
    return Check("<B><A " + entry + ">\n" + line + "\n" + Rows(without) + "</A></B>");
}

TEST(ProfileCheck, FindsNothingInASoundFile) {
    EXPECT_EQ(
        Check("\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- c --><B>\n<A Id=\"1F\">" + Rows() +
              "<V Name=\"Watt\" Normal=\"185\"/><V Name=\"NewestVBIOS\" Normal=\"0x10\"/></A>\n<A Default=\"1\">" +
              Rows() + "</A></B>\n"),
        "");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\" 1.05 \" Given=\"1800\"/>", "GpuOC"), "");
}

TEST(ProfileCheck, PlacesSyntaxErrors) {
    std::string const notClosed = "f:2: error: an element that is not closed, or is closed by another name\n";
    EXPECT_EQ(Check("<B>\n  <A Id=\"1F\">\n</B>"), notClosed);
    EXPECT_EQ(Check("<B>\n  <A Id=\"1F\">"), notClosed);
    std::string const attribute = "f:2: error: a tag with an attribute that has no value in quotes, or appears twice\n";
    EXPECT_EQ(Check("<B>\n <A Id=1F/></B>"), attribute);
    EXPECT_EQ(Check("<B>\n <A Id/></B>"), attribute);
    EXPECT_EQ(Check("<B>\n <A Id=\"1F/></B>"), attribute);
    EXPECT_EQ(Check("<B>\n <A Id=\"1\" Id=\"2\"/></B>"), attribute);
    std::string const tag = "f:2: error: a tag without its end \">\", or with what is no attribute in it\n";
    EXPECT_EQ(Check("<B>\n <A &/></B>"), tag);
    EXPECT_EQ(Check("<B>\n <A Id=\"1\""), tag);
    EXPECT_EQ(Check("<B>\n <1/></B>"), "f:2: error: a tag without a name (a '<' in text is written \"&lt;\")\n");
    EXPECT_EQ(Check("<B>\n<!-- "), "f:2: error: comment without its end \"-->\"\n");
    EXPECT_EQ(Check("<B>\n<![CDATA[ "), "f:2: error: CDATA section without its end \"]]>\"\n");
    std::string const declaration =
        ": error: a declaration without its end \"?>\", or not at the beginning of the file\n";
    EXPECT_EQ(Check("<B/>\n<?xml?>"), "f:2" + declaration);
    EXPECT_EQ(Check("<?xml "), "f:1" + declaration);
    EXPECT_EQ(Check("<B/>\n<!B"), "f:2: error: declaration without its end \">\"\n");
    EXPECT_EQ(Check("<B/>\nend"), "f:2: error: text that no tag follows\n");
}

TEST(ProfileCheck, FindsFilesThatAreNoProfileFiles) {
    EXPECT_EQ(Check(""), "f:1: error: no root element\n");
    EXPECT_EQ(Check(" \n<!-- c -->"), "f:1: error: no root element\n");
    EXPECT_EQ(Check("\xEF\xBB\xBF<A/>"), "f:1: error: no entries in the root element\n");
    EXPECT_EQ(Check("\n <B>text</B>"), "f:2: error: no entries in the root element\n");
    EXPECT_EQ(Check(std::string_view("\xFF\xFE<\0B\0/\0>\0", 10)),
              "f:1: error: the file is UTF-16 text, which is not read: save it as UTF-8\n");
    EXPECT_EQ(Check(std::string(profile::kLargestDocument + 1, ' ')),
              "f:1: error: the file is longer than 4 MiB and is not read\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"" + std::string(profile::kLongestTag, '1') + "\"/></B>"),
              "f:2: error: this tag is longer than 4096 bytes\n");
    // How deep is too deep depends on the XML library's version.
    std::string deep;
    for (int level = 0; level < 1000; ++level) {
        deep += "<a>\n";
    }
    EXPECT_EQ(Check(deep),
              "f:" + std::to_string(TINYXML2_MAX_ELEMENT_DEPTH - 1) + ": error: elements are nested too deeply\n");
}

TEST(ProfileCheck, FindsWhatStandsBehindTheEnd) {
    EXPECT_EQ(Check("<B><A Id=\"1F\">" + Rows() + "</A></B>\n</C><"),
              "f:1: error: a closing tag without an opening one follows; nothing behind it is read\n");
    std::string nul = "<B><A Id=\"1F\">" + Rows() + "</A></B>\n";
    nul += '\0';
    EXPECT_EQ(Check(nul), "f:8: error: a NUL character; nothing behind it is read\n");
    EXPECT_EQ(Check("<B><A Id=\"1F\">" + Rows() + "</A></B>\n<C/>"),
              "f:8: warning: only the first element of the file is read\n");
}

TEST(ProfileCheck, FindsEntriesThatAreNeverUsed) {
    EXPECT_EQ(Check("<B>\n<A/></B>"), "f:2: error: an entry with neither \"Id\" nor \"Default\" is never used\n");
    EXPECT_EQ(Check("<B>\n<A Default=\"0\"><V/></A></B>"),
              "f:2: warning: an entry whose \"Default\" is \"0\" instead of \"1\" is never used\n");
    EXPECT_EQ(Check("<B><A Id=\"1F\">" + Rows() + "</A>\n<A Id=\"0x1f\">" + Rows() + "</A></B>"),
              "f:8: error: the same \"Id\" as in line 1; this entry is never used\n");
}

TEST(ProfileCheck, FindsMalformedIds) {
    EXPECT_EQ(Check("<B>\n<A Id=\"none\">" + Rows() + "</A></B>"),
              "f:2: error: \"Id\" \"none\" is not a hexadecimal number; every lookup that comes to this entry fails\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"\">" + Rows() + "</A></B>"),
              "f:2: error: \"Id\" \"\" is not a hexadecimal number; every lookup that comes to this entry fails\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"80000000\">" + Rows() + "</A></B>"),
              "f:2: error: \"Id\" \"80000000\" is beyond 7FFFFFFF (or -80000000); every lookup that comes to this "
              "entry fails\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"1F, 20\">" + Rows() + "</A></B>"),
              "f:2: warning: \"Id\" \"1F, 20\": what follows the number is ignored\n");
}

TEST(ProfileCheck, FindsDoubtfulDefaultEntries) {
    EXPECT_EQ(Check("<B><A Default=\"1\">" + Rows() + "</A>\n<A Default=\"1\">" + Rows() + "</A></B>"),
              "f:8: warning: another default entry, whose values replace those of line 1\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"1F\" Default=\"1\">" + Rows() + "</A></B>"),
              "f:2: warning: \"Default\" is not looked at beside \"Id\"\n");
    EXPECT_EQ(CheckLine("<V Name=\"Watt\" Normal=\"x\"/>", "", "Default=\"1\""),
              "f:2: warning: \"Watt\" is read in board entries only\n");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"1\" Given=\"x\"/>", "GpuOC", "Default=\"1\""),
              "f:2: warning: \"Given\" is read in board entries only\n");
}

TEST(ProfileCheck, FindsRowsThatAreNotRead) {
    EXPECT_EQ(CheckLine("<V Normal=\"1\"/>"), "f:2: error: a value without \"Name\" is not read\n");
    EXPECT_EQ(CheckLine(" <V Name=\"gpuOC\" Normal=\"1\"/>"),
              "f:2: warning: a value with the unknown \"Name\" \"gpuOC\" is not read\n");
    EXPECT_EQ(CheckLine("<V Name=\"MemOC\"/>", "MemOC"), "f:2: error: \"MemOC\" has no \"Normal\"\n");
    EXPECT_EQ(CheckLine("<V Name=\"PowerOC\" Normal=\"1\" Given=\"x\"/>", "PowerOC"),
              "f:2: warning: \"Given\" is read with GpuOC and MemOC only\n");
    EXPECT_EQ(Check("<B>\n<A Id=\"1\">" + Rows("PowerOC") + "</A></B>"),
              "f:2: warning: power limits that this entry does not give are 0 %: PowerOC\n");
    EXPECT_EQ(CheckLine("<V Name=\"MemOC\" Normal=\"1\"/><V Name=\"MemOC\" Normal=\"1\"/>", "MemOC"),
              "f:2: warning: another \"MemOC\" in the same entry replaces the first\n");
}

TEST(ProfileCheck, FindsClocksThatAreNotGiven) {
    for (std::string const name : {"GpuOC", "MemOC", "GpuSilent", "MemSilent"}) {
        for (std::string const entry : {"Id=\"1\"", "Default=\"1\""}) {
            EXPECT_EQ(
                Check("<B>\n<A " + entry + ">" + Rows(name) + "</A></B>"),
                "f:2: error: clocks that this entry does not give are 0 MHz on Overdrive8 boards: " + name + "\n");
        }
    }
    EXPECT_EQ(Check("<B>\n<A Id=\"1\"/></B>"),
              "f:2: error: clocks that this entry does not give are 0 MHz on Overdrive8 boards: GpuOC, MemOC, "
              "GpuSilent, MemSilent\n"
              "f:2: warning: power limits that this entry does not give are 0 %: PowerOC, PowerSilent\n");
}

TEST(ProfileCheck, FindsValuesThatDoNotFit) {
    for (std::string const text : {"1e30", "-1e30", "20000010", "-2147483648"}) {
        EXPECT_EQ(CheckLine("<V Name=\"MemOC\" Normal=\"" + text + "\" Given=\"" + text + "\"/>", "MemOC"),
                  "f:2: error: \"Normal\" \"" + text + "\" does not fit: at most 20000000\n" +
                      "f:2: error: \"Given\" \"" + text + "\" does not fit: at most 20000000\n");
    }
    EXPECT_EQ(CheckLine("<V Name=\"PowerOC\" Normal=\"1e30\"/>", "PowerOC"),
              "f:2: error: \"Normal\" \"1e30\" does not fit: at most 20000000\n");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"1\" Given=\"-20000000\"/>", "GpuOC"), "");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"nan\" Given=\"-inf\"/>", "GpuOC"),
              "f:2: error: \"Normal\" \"nan\" is not a finite number\n"
              "f:2: error: \"Given\" \"-inf\" is not a finite number\n");
}

TEST(ProfileCheck, FindsMalformedValues) {
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"x\" Given=\"y\"/>", "GpuOC"),
              "f:2: error: \"Normal\" \"x\" is not a number\nf:2: error: \"Given\" \"y\" is not a number\n");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"1,05\"/>", "GpuOC"),
              "f:2: warning: \"Normal\" \"1,05\": what follows the number is ignored\n");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"1e39\"/>", "GpuOC"),
              "f:2: error: \"Normal\" \"1e39\" is too large or too small for a number of single precision\n");
    EXPECT_EQ(CheckLine("<V Name=\"GpuOC\" Normal=\"inf\"/>", "GpuOC"),
              "f:2: error: \"Normal\" \"inf\" is not a finite number\n");
    EXPECT_EQ(CheckLine("<V Name=\"Watt\" Normal=\"x\"/>"), "f:2: error: \"Normal\" \"x\" is not a whole number\n");
    EXPECT_EQ(CheckLine("<V Name=\"Watt\" Normal=\"1.5\"/>"),
              "f:2: warning: \"Normal\" \"1.5\": what follows the number is ignored\n");
    EXPECT_EQ(CheckLine("<V Name=\"Watt\" Normal=\"2147483648\"/>"),
              "f:2: error: \"Normal\" \"2147483648\" is beyond 32 bits\n");
}

TEST(ProfileCheck, PlacesElementsThatShareALineOrNestDeeper) {
    EXPECT_EQ(CheckLine("<V Name=\"MemOC\" Normal=\"1\"><W Name=\"x\"><X/></W></V><V/>", "MemOC"),
              "f:2: error: a value without \"Name\" is not read\n");
    EXPECT_EQ(Check("<B><A Default=\"2\"><V><W/></V></A><A/></B>"),
              "f:1: warning: an entry whose \"Default\" is \"2\" instead of \"1\" is never used\n"
              "f:1: error: an entry with neither \"Id\" nor \"Default\" is never used\n");
}

TEST(ProfileCheck, LongValuesAreCutInMessages) {
    EXPECT_EQ(CheckLine("<V Name=\"Watt\" Normal=\"" + std::string(50, 'x') + "\"/>"),
              "f:2: error: \"Normal\" \"" + std::string(40, 'x') + "...\" is not a whole number\n");
}

TEST(ProfileCheck, OnlyErrorsCountAsErrors) {
    EXPECT_FALSE(HasError({}));
    EXPECT_FALSE(HasError({{1, Severity::Warning, "w"}}));
    EXPECT_TRUE(HasError({{1, Severity::Warning, "w"}, {2, Severity::Error, "e"}}));
}

TEST(ProfileCheck, ShippedExampleHasNoProblem) {
    std::filesystem::path const repository = std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "..";
    std::ifstream file(repository / "Config" / "ConfigModel.xml", std::ios::binary);
    ASSERT_TRUE(file.is_open());
    std::string const text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(Check(text), "");
    // The simulated OverdriveN board.
    EXPECT_EQ(profile::FindProfile(text, 0x0B361002).outcome, profile::Outcome::BoardEntry);
    EXPECT_EQ(profile::FindProfile(text, 1).outcome, profile::Outcome::DefaultEntry);
}

// What the check says of a number; "" when it finds nothing.
std::string Float(char const* text) {
    return std::string(CheckFloat(text).text);
}

std::string Integer(char const* text) {
    return std::string(CheckInteger(text).text);
}

std::string Identifier(char const* text) {
    long long id = 0;
    return std::string(CheckIdentifier(text, id).text);
}

constexpr char const* kTrailing = ": what follows the number is ignored";

TEST(NumberCheck, IdentifiersAreCheckedAsTheyAreRead) {
    long long id = 0;
    EXPECT_EQ(CheckIdentifier(" -80000000 ", id).text, "");
    EXPECT_EQ(id, -2147483648LL);
    EXPECT_EQ(CheckIdentifier("0X1f", id).text, "");
    EXPECT_EQ(id, 31);
    constexpr char const* kOutOfRange =
        " is beyond 7FFFFFFF (or -80000000); every lookup that comes to this entry fails";
    EXPECT_EQ(Identifier("-80000001"), kOutOfRange);
    EXPECT_EQ(Identifier("FFFFFFFFF"), kOutOfRange);
    EXPECT_EQ(Identifier("FFFFFFFFFFFFFFFFFFFF"), kOutOfRange);
    EXPECT_EQ(Identifier("0x"), " is not a hexadecimal number; every lookup that comes to this entry fails");
    EXPECT_EQ(Identifier("1g"), kTrailing);
}

TEST(NumberCheck, FloatsAreCheckedAsTheyAreRead) {
    constexpr char const* kNotANumber = " is not a number";
    constexpr char const* kOutOfRange = " is too large or too small for a number of single precision";
    constexpr char const* kTooLarge = " does not fit: at most 20000000";
    EXPECT_EQ(Float(" +1.5e2 "), "");
    EXPECT_EQ(Float("0x1.8p1"), "");
    EXPECT_EQ(Float("+-1"), kNotANumber);
    EXPECT_EQ(Float("0xinf"), kNotANumber);
    EXPECT_EQ(Float(""), kNotANumber);
    EXPECT_EQ(Float("-nan"), " is not a finite number");
    EXPECT_EQ(Float("1e-60"), kOutOfRange);
    EXPECT_EQ(Float("1e-40"), kOutOfRange);
    EXPECT_EQ(Float("0.0"), "");
    EXPECT_EQ(Float("1.5GHz"), kTrailing);
    EXPECT_EQ(Float("1e10"), kTooLarge);
    EXPECT_EQ(Float("1e10 MHz"), kTooLarge);
}

TEST(NumberCheck, IntegersAreCheckedAsTheyAreRead) {
    EXPECT_EQ(Integer("-2147483648"), "");
    EXPECT_EQ(Integer("-2147483649"), " is beyond 32 bits");
    EXPECT_EQ(Integer("0x10"), "");
    EXPECT_EQ(Integer("1 2"), kTrailing);
    EXPECT_EQ(Integer("0x"), " is not a whole number");
}

}  // namespace
}  // namespace gputune::tool
