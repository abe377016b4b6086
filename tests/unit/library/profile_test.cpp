// What is read from the text of a profile file. profile_file_test.cpp has the file itself and the log.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <string>

#include "comma_locale.h"
#include "profile/profile_reader.h"
#include "records/hex_long.h"

namespace gputune::profile {
namespace {

constexpr std::uint32_t kBoard = 31;  // "1F"

std::string Row(std::string const& name, std::string const& attributes) {
    return "<Value Name=\"" + name + "\" " + attributes + "/>";
}

std::string File(std::string const& entries) {
    return "<Boards>" + entries + "</Boards>";
}

std::string BoardEntry(std::string const& rows, std::string const& id = "1F") {
    return "<Board Id=\"" + id + "\">" + rows + "</Board>";
}

std::string DefaultEntry(std::string const& rows, std::string const& value = "1") {
    return "<Board Default=\"" + value + "\">" + rows + "</Board>";
}

// All rows, each with another value.
std::string const kAllRows =
    Row("GpuOC", "Normal=\"1.5\" Given=\"1800\"") + Row("MemOC", "Normal=\"1.25\" Given=\"2100.5\"") +
    Row("PowerOC", "Normal=\"20\"") + Row("GpuSilent", "Normal=\"0.75\"") + Row("MemSilent", "Normal=\"0.5\"") +
    Row("PowerSilent", "Normal=\"-10\"") + Row("Watt", "Normal=\"185\"") + Row("NewestVBIOS", "Normal=\"42\"");

PredefinedPerformanceParameter ReadBoard(std::string const& rows) {
    Lookup const lookup = FindProfile(File(BoardEntry(rows)), kBoard);
    EXPECT_EQ(lookup.outcome, Outcome::BoardEntry);
    return lookup.record;
}

void ExpectZeros(PredefinedPerformanceParameter const& record) {
    EXPECT_EQ(record.GpuOC, 0.0F);
    EXPECT_EQ(record.GpuOCGivenValue, 0.0F);
    EXPECT_EQ(record.MemOC, 0.0F);
    EXPECT_EQ(record.MemOCGivenValue, 0.0F);
    EXPECT_EQ(record.PowerOC, 0.0F);
    EXPECT_EQ(record.GpuSilent, 0.0F);
    EXPECT_EQ(record.MemSilent, 0.0F);
    EXPECT_EQ(record.PowerSilent, 0.0F);
    EXPECT_EQ(record.Watt, 0);
    EXPECT_EQ(record.NewestVBIOS, 0);
}

Outcome OutcomeOf(std::string const& document) {
    Lookup const lookup = FindProfile(document, kBoard);
    if (lookup.outcome < Outcome::DefaultEntry) {
        EXPECT_FALSE(lookup.record.Valid);
        ExpectZeros(lookup.record);
    }
    return lookup.outcome;
}

// ---- Rows ----

TEST(ProfileRows, BoardEntryGivesEveryField) {
    Lookup const lookup = FindProfile(File(BoardEntry(kAllRows)), kBoard);
    ASSERT_EQ(lookup.outcome, Outcome::BoardEntry);
    EXPECT_TRUE(lookup.record.Valid);
    EXPECT_EQ(lookup.record.GpuOC, 1.5F);
    EXPECT_EQ(lookup.record.GpuOCGivenValue, 1800.0F);
    EXPECT_EQ(lookup.record.MemOC, 1.25F);
    EXPECT_EQ(lookup.record.MemOCGivenValue, 2100.5F);
    EXPECT_EQ(lookup.record.PowerOC, 20.0F);
    EXPECT_EQ(lookup.record.GpuSilent, 0.75F);
    EXPECT_EQ(lookup.record.MemSilent, 0.5F);
    EXPECT_EQ(lookup.record.PowerSilent, -10.0F);
    EXPECT_EQ(lookup.record.Watt, 185);
    EXPECT_EQ(lookup.record.NewestVBIOS, 42);
}

TEST(ProfileRows, DefaultEntryGivesSixValuesAndZerosElsewhere) {
    Lookup const lookup = FindProfile(File(DefaultEntry(kAllRows)), kBoard);
    ASSERT_EQ(lookup.outcome, Outcome::DefaultEntry);
    EXPECT_TRUE(lookup.record.Valid);
    EXPECT_EQ(lookup.record.GpuOC, 1.5F);
    EXPECT_EQ(lookup.record.GpuOCGivenValue, 0.0F);
    EXPECT_EQ(lookup.record.MemOC, 1.25F);
    EXPECT_EQ(lookup.record.MemOCGivenValue, 0.0F);
    EXPECT_EQ(lookup.record.PowerOC, 20.0F);
    EXPECT_EQ(lookup.record.GpuSilent, 0.75F);
    EXPECT_EQ(lookup.record.MemSilent, 0.5F);
    EXPECT_EQ(lookup.record.PowerSilent, -10.0F);
    EXPECT_EQ(lookup.record.Watt, 0);
    EXPECT_EQ(lookup.record.NewestVBIOS, 0);
}

TEST(ProfileRows, AbsentGivenLeavesZero) {
    PredefinedPerformanceParameter const record =
        ReadBoard(Row("GpuOC", "Normal=\"1.5\"") + Row("MemOC", "Normal=\"2\""));
    EXPECT_EQ(record.GpuOC, 1.5F);
    EXPECT_EQ(record.GpuOCGivenValue, 0.0F);
    EXPECT_EQ(record.MemOC, 2.0F);
    EXPECT_EQ(record.MemOCGivenValue, 0.0F);
}

TEST(ProfileRows, GivenAloneIsReadWithoutNormal) {
    PredefinedPerformanceParameter const record = ReadBoard(Row("GpuOC", "Given=\"1800\""));
    EXPECT_EQ(record.GpuOC, 0.0F);
    EXPECT_EQ(record.GpuOCGivenValue, 1800.0F);
}

TEST(ProfileRows, GivenCountsOnOverclockRowsOnly) {
    PredefinedPerformanceParameter const record =
        ReadBoard(Row("PowerOC", "Given=\"3\"") + Row("GpuSilent", "Given=\"4\"") + Row("Watt", "Given=\"5\""));
    ExpectZeros(record);
}

TEST(ProfileRows, NamesAreCaseSensitiveAndExact) {
    ExpectZeros(ReadBoard(Row("gpuOC", "Normal=\"1\"") + Row("GpuOC ", "Normal=\"2\"") + Row("GpuO", "Normal=\"3\"") +
                          Row("Gpu", "Normal=\"4\"") + Row("", "Normal=\"5\"") +
                          Row("GpuOCGivenValue", "Normal=\"6\"")));
}

TEST(ProfileRows, AttributeNamesAreCaseSensitive) {
    ExpectZeros(ReadBoard("<Value name=\"GpuOC\" Normal=\"1\"/><Value Name=\"MemOC\" normal=\"1\" given=\"2\"/>"));
}

TEST(ProfileRows, RowWithoutNameIsSkipped) {
    PredefinedPerformanceParameter const record = ReadBoard("<Value Normal=\"9\"/>" + Row("PowerOC", "Normal=\"3\""));
    EXPECT_EQ(record.PowerOC, 3.0F);
    EXPECT_EQ(record.GpuOC, 0.0F);
}

TEST(ProfileRows, RepeatedNameLaterWins) {
    EXPECT_EQ(ReadBoard(Row("GpuOC", "Normal=\"1\"") + Row("GpuOC", "Normal=\"2\"")).GpuOC, 2.0F);
    EXPECT_EQ(ReadBoard(Row("Watt", "Normal=\"1\"") + Row("Watt", "Normal=\"2\"")).Watt, 2);
}

TEST(ProfileRows, RepeatedNameThatDoesNotConvertLeavesTheEarlierValue) {
    PredefinedPerformanceParameter const record =
        ReadBoard(Row("GpuOC", "Normal=\"1\" Given=\"7\"") + Row("GpuOC", "Normal=\"x\"") +
                  Row("Watt", "Normal=\"3\"") + Row("Watt", "Normal=\"\""));
    EXPECT_EQ(record.GpuOC, 1.0F);
    EXPECT_EQ(record.GpuOCGivenValue, 7.0F);
    EXPECT_EQ(record.Watt, 3);
}

TEST(ProfileRows, ElementNamesDoNotMatter) {
    Lookup const lookup =
        FindProfile("<a><b Id=\"1F\"><c Name=\"Watt\" Normal=\"1\"/><d Name=\"MemOC\" Normal=\"2\"/></b></a>", kBoard);
    EXPECT_EQ(lookup.record.Watt, 1);
    EXPECT_EQ(lookup.record.MemOC, 2.0F);
}

TEST(ProfileRows, CommentsAndTextBetweenRowsAreSkipped) {
    EXPECT_EQ(
        ReadBoard("text <!-- <Value Name=\"Watt\" Normal=\"1\"/> --> <![CDATA[ < > ]]>" + Row("Watt", "Normal=\"2\""))
            .Watt,
        2);
}

TEST(ProfileRows, RowsOfNestedElementsAreNotRead) {
    ExpectZeros(ReadBoard("<Group>" + Row("Watt", "Normal=\"2\"") + "</Group>"));
}

TEST(ProfileRows, EntityReferencesAreResolved) {
    EXPECT_EQ(ReadBoard(Row("W&#97;tt", "Normal=\"&#x37;\"")).Watt, 7);
}

// ---- Numbers ----

float Float(std::string const& text) {
    return ReadBoard(Row("PowerOC", "Normal=\"-7\"") + Row("PowerOC", "Normal=\"" + text + "\"")).PowerOC;
}

TEST(ProfileNumbers, FloatsAreScannedUpToWhatBelongsToNoNumber) {
    EXPECT_EQ(Float("1.5"), 1.5F);
    EXPECT_EQ(Float(" \t\n+.5"), 0.5F);
    EXPECT_EQ(Float("-5."), -5.0F);
    EXPECT_EQ(Float("15e-1"), 1.5F);
    EXPECT_EQ(Float("1.5GHz"), 1.5F);
    EXPECT_EQ(Float("1,5"), 1.0F);
    EXPECT_EQ(Float("1.05"), 1.05F);
    EXPECT_EQ(Float("0x1.8p1"), 3.0F);
    EXPECT_EQ(Float("-0X10"), -16.0F);
    EXPECT_EQ(Float("1x"), 1.0F);
    EXPECT_EQ(Float("00x1"), 0.0F);
}

TEST(ProfileNumbers, InfinityAndNotANumberAreNumbersToTheScanner) {
    EXPECT_EQ(Float("inf"), INFINITY);
    EXPECT_EQ(Float("-Infinity"), -INFINITY);
    EXPECT_TRUE(std::isnan(Float("nan")));
}

TEST(ProfileNumbers, FloatBeyondSinglePrecisionIsInfiniteOrZero) {
    EXPECT_EQ(Float("1e39"), INFINITY);
    EXPECT_EQ(Float("-1e39"), -INFINITY);
    EXPECT_EQ(Float("1e-60"), 0.0F);
}

TEST(ProfileNumbers, FloatThatDoesNotConvertLeavesTheField) {
    for (char const* text :
         {"", " ", "x", "-", "+", ".", "+-1", "--1", "-+1", "- 1", "0x", "0xg", "0x-1", "0xinf", "e1", "&#1;1"}) {
        EXPECT_EQ(Float(text), -7.0F) << text;
    }
}

int Int(std::string const& text) {
    return ReadBoard(Row("Watt", "Normal=\"-7\"") + Row("Watt", "Normal=\"" + text + "\"")).Watt;
}

TEST(ProfileNumbers, IntegersAreScannedUpToWhatBelongsToNoNumber) {
    EXPECT_EQ(Int("185"), 185);
    EXPECT_EQ(Int(" +185W"), 185);
    EXPECT_EQ(Int("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Int("2147483647"), 2147483647);
    EXPECT_EQ(Int("1.9"), 1);
    EXPECT_EQ(Int("010"), 10);
    EXPECT_EQ(Int("0x10"), 16);
    EXPECT_EQ(Int("0xFFFFFFFF"), -1);
}

TEST(ProfileNumbers, IntegerBeyondItsRangeIsTheNearest) {
    EXPECT_EQ(Int("2147483648"), 2147483647);
    EXPECT_EQ(Int("99999999999999999999"), 2147483647);
    EXPECT_EQ(Int("-2147483649"), -2147483647 - 1);
    EXPECT_EQ(Int("-99999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(Int("0x1FFFFFFFF"), -1);
    EXPECT_EQ(Int("0xFFFFFFFFFFFFFFFFFFFF"), -1);
}

// "-0x10" is read as the decimal zero before the "x".
TEST(ProfileNumbers, IntegerIsHexadecimalOnlyBehindAnUnsignedPrefix) {
    EXPECT_EQ(Int(" 0X1fz"), 31);
    EXPECT_EQ(Int("-0x10"), 0);
    EXPECT_EQ(Int("+0x10"), 0);
    EXPECT_EQ(Int("1F"), 1);
}

TEST(ProfileNumbers, IntegerThatDoesNotConvertLeavesTheField) {
    for (char const* text : {"", " ", "x", "-", "--1", ".5", "inf", "0x", " 0X", "0xg", "0x-1", "0x 1"}) {
        EXPECT_EQ(Int(text), -7) << text;
    }
}

// The host may have set such a locale; numbers of the file are read the same.
TEST(ProfileNumbers, HostLocaleDoesNotChangeTheDecimalPoint) {
    if (!test::SetCommaLocale()) {
        GTEST_SKIP() << "no locale with a decimal comma (Debian: package locales)";
    }
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    float const point = Float("1.5");
    float const comma = Float("1,5");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(point, 1.5F);
    EXPECT_EQ(comma, 1.0F);
}

// ---- Which entry ----

TEST(ProfileEntries, IdIsHexadecimalInEitherCaseWithOrWithoutPrefix) {
    for (char const* id : {"1F", "1f", "0x1f", "0X1F", "0000001F", " \t1F", "+1F", "+0x1F", "1F rest", "1Fg"}) {
        EXPECT_EQ(FindProfile(File(BoardEntry("", id)), 31).outcome, Outcome::BoardEntry) << id;
    }
}

TEST(ProfileEntries, IdIsASigned32BitNumber) {
    EXPECT_EQ(FindProfile(File(BoardEntry("", "7FFFFFFF")), 0x7FFFFFFF).outcome, Outcome::BoardEntry);
    EXPECT_EQ(FindProfile(File(BoardEntry("", "-1")), 0xFFFFFFFF).outcome, Outcome::BoardEntry);
    EXPECT_EQ(FindProfile(File(BoardEntry("", "-80000000")), 0x80000000).outcome, Outcome::BoardEntry);
    EXPECT_EQ(FindProfile(File(BoardEntry("", "0")), 0).outcome, Outcome::BoardEntry);
}

TEST(ProfileEntries, OtherIdsDoNotMatch) {
    EXPECT_EQ(FindProfile(File(BoardEntry("", "31") + BoardEntry("", "1F0")), 31).outcome, Outcome::NoMatch);
}

TEST(ProfileEntries, FirstMatchingEntryCounts) {
    std::string const file = File(BoardEntry(Row("Watt", "Normal=\"1\"")) + BoardEntry(Row("Watt", "Normal=\"2\"")));
    EXPECT_EQ(FindProfile(file, kBoard).record.Watt, 1);
}

TEST(ProfileEntries, BoardEntryBehindTheDefaultEntryWins) {
    Lookup const lookup = FindProfile(
        File(DefaultEntry(Row("GpuOC", "Normal=\"9\"")) + BoardEntry(Row("MemOC", "Normal=\"2\""))), kBoard);
    EXPECT_EQ(lookup.outcome, Outcome::BoardEntry);
    EXPECT_EQ(lookup.record.GpuOC, 0.0F);
    EXPECT_EQ(lookup.record.MemOC, 2.0F);
}

TEST(ProfileEntries, LaterDefaultEntryReplacesTheValuesItGives) {
    Lookup const lookup = FindProfile(File(DefaultEntry(Row("GpuOC", "Normal=\"1\"") + Row("MemOC", "Normal=\"2\"")) +
                                           DefaultEntry(Row("MemOC", "Normal=\"3\""))),
                                      kBoard);
    EXPECT_EQ(lookup.outcome, Outcome::DefaultEntry);
    EXPECT_EQ(lookup.record.GpuOC, 1.0F);
    EXPECT_EQ(lookup.record.MemOC, 3.0F);
}

TEST(ProfileEntries, EntriesWithoutRowsAreValid) {
    Lookup const board = FindProfile(File("<Board Id=\"1F\"/>"), kBoard);
    EXPECT_EQ(board.outcome, Outcome::BoardEntry);
    EXPECT_TRUE(board.record.Valid);
    ExpectZeros(board.record);
    Lookup const fallback = FindProfile(File("<Board Default=\"1\"/>"), kBoard);
    EXPECT_EQ(fallback.outcome, Outcome::DefaultEntry);
    EXPECT_TRUE(fallback.record.Valid);
    ExpectZeros(fallback.record);
}

TEST(ProfileEntries, DefaultOtherThanOneIsIgnored) {
    for (char const* value : {"0", "", "2", "01", "1 ", " 1", "true", "yes"}) {
        EXPECT_EQ(OutcomeOf(File(DefaultEntry(kAllRows, value))), Outcome::NoMatch) << value;
    }
}

TEST(ProfileEntries, EntryWithNeitherIdNorDefaultIsSkipped) {
    EXPECT_EQ(OutcomeOf(File("<Board>" + kAllRows + "</Board>")), Outcome::NoMatch);
    EXPECT_EQ(FindProfile(File("<Board/>" + BoardEntry("")), kBoard).outcome, Outcome::BoardEntry);
}

TEST(ProfileEntries, IdCountsBeforeDefault) {
    EXPECT_EQ(OutcomeOf(File("<Board Id=\"20\" Default=\"1\"/>")), Outcome::NoMatch);
    EXPECT_EQ(OutcomeOf(File("<Board Default=\"1\" Id=\"1F\"/>")), Outcome::BoardEntry);
}

void ExpectThrown(std::string const& id, char const* text) {
    try {
        FindProfile(File(BoardEntry("", id)), kBoard);
        ADD_FAILURE() << id << " was read";
    } catch (HexLongError const& error) {
        EXPECT_STREQ(error.what(), text) << id;
    }
}

TEST(ProfileEntries, IdThatIsNoNumberIsThrown) {
    for (char const* id : {"", " ", "none", "0x", "-", "-0x", "g1F"}) {
        ExpectThrown(id, "invalid stol argument");
    }
}

TEST(ProfileEntries, IdBeyondSigned32BitsIsThrown) {
    for (char const* id : {"80000000", "FFFFFFFF", "-80000001", "123456789", "FFFFFFFFFFFFFFFFFFFF"}) {
        ExpectThrown(id, "stol argument out of range");
    }
}

TEST(ProfileEntries, MalformedIdBehindTheMatchIsNotReached) {
    EXPECT_EQ(FindProfile(File(BoardEntry("") + BoardEntry("", "x")), kBoard).outcome, Outcome::BoardEntry);
}

TEST(ProfileEntries, MalformedIdStopsTheLookupOfTheDefaultEntry) {
    EXPECT_THROW(FindProfile(File(DefaultEntry("") + BoardEntry("", "x")), kBoard), HexLongError);
}

// ---- Documents ----

TEST(ProfileDocuments, WithoutXmlAreUnreadable) {
    for (char const* text :
         {"", " \r\n", "text", "<", "<Boards", "<Boards>", "<Boards><Board Id=\"1F\">", "<Boards></Board>",
          "<Boards Id=1F/>", "<Boards Id=\"1/>", "<Boards a=\"1\" a=\"2\"/>", "<!-- ", "<?xml ", "<Boards/> text"}) {
        EXPECT_EQ(OutcomeOf(text), Outcome::Unreadable) << text;
    }
}

TEST(ProfileDocuments, Utf16IsUnreadable) {
    std::string utf16 = "\xFF\xFE";
    for (char const c : File(BoardEntry(""))) {
        utf16 += {c, '\0'};
    }
    EXPECT_EQ(OutcomeOf(utf16), Outcome::Unreadable);
}

TEST(ProfileDocuments, WithoutElementHaveNoRoot) {
    EXPECT_EQ(OutcomeOf("<!-- nothing -->"), Outcome::NoRoot);
    EXPECT_EQ(OutcomeOf("<?xml version=\"1.0\"?>"), Outcome::NoRoot);
}

TEST(ProfileDocuments, RootWithoutElementsHasNoEntries) {
    EXPECT_EQ(OutcomeOf("<Boards/>"), Outcome::NoEntries);
    EXPECT_EQ(OutcomeOf("<Boards>text<!-- <Board Default=\"1\"/> --></Boards>"), Outcome::NoEntries);
}

TEST(ProfileDocuments, OnlyTheFirstElementIsTheRoot) {
    EXPECT_EQ(OutcomeOf("<Boards/>" + File(BoardEntry(""))), Outcome::NoEntries);
}

TEST(ProfileDocuments, DeclarationByteOrderMarkAndDocumentTypeAreAccepted) {
    EXPECT_EQ(OutcomeOf("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<!DOCTYPE Boards>\r\n" +
                        File(BoardEntry(""))),
              Outcome::BoardEntry);
}

TEST(ProfileDocuments, EndAtANul) {
    std::string const file = File(BoardEntry(""));
    EXPECT_EQ(OutcomeOf(file + '\0' + "<"), Outcome::BoardEntry);
    EXPECT_EQ(OutcomeOf(file.substr(0, 20) + '\0' + file.substr(20)), Outcome::Unreadable);
}

TEST(ProfileDocuments, EveryTruncationOfAFileIsAnswered) {
    std::string const file = "<?xml version=\"1.0\"?><!-- c -->" + File(DefaultEntry(kAllRows) + BoardEntry(kAllRows));
    for (std::size_t length = 0; length < file.size(); ++length) {
        Outcome const outcome = OutcomeOf(file.substr(0, length));
        EXPECT_TRUE(outcome == Outcome::Unreadable || outcome == Outcome::NoRoot) << length;
    }
}

// ---- Hostile documents ----

std::string Repeat(std::string const& piece, std::size_t times) {
    std::string text;
    for (std::size_t i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

TEST(HostileProfiles, DeepNestingIsUnreadable) {
    EXPECT_EQ(OutcomeOf(Repeat("<a>", 100000) + Repeat("</a>", 100000)), Outcome::Unreadable);
    EXPECT_EQ(OutcomeOf(Repeat("<a>", 500000)), Outcome::Unreadable);
}

TEST(HostileProfiles, LargestDocumentIsReadAndALongerOneIsNot) {
    std::string const head = File(BoardEntry(""));
    EXPECT_EQ(OutcomeOf(head + std::string(kLargestDocument - head.size(), ' ')), Outcome::BoardEntry);
    EXPECT_EQ(OutcomeOf(head + std::string(kLargestDocument - head.size() + 1, ' ')), Outcome::Unreadable);
}

TEST(HostileProfiles, LongestTagIsReadAndALongerOneIsNot) {
    std::string const tag = "<Board Id=\"1F\" x=\"\"/>";
    auto const withTag = [&](std::size_t length) {
        return File("<Board Id=\"1F\" x=\"" + std::string(length - tag.size(), '>') + "\"/>");
    };
    EXPECT_EQ(OutcomeOf(withTag(kLongestTag)), Outcome::BoardEntry);
    EXPECT_EQ(OutcomeOf(withTag(kLongestTag + 1)), Outcome::Unreadable);
}

// The XML parser writes names into its error messages, in a buffer of 1000 characters.
TEST(HostileProfiles, ErrorsAboutLongNamesAreUnreadable) {
    for (std::size_t const length : {940U, 960U, 980U, 1000U, 4000U}) {
        std::string const name(length, 'n');
        EXPECT_EQ(OutcomeOf("<" + name + "></other>"), Outcome::Unreadable) << length;
        EXPECT_EQ(OutcomeOf("<root/><?" + name + Repeat(name, 100) + "?>"), Outcome::Unreadable) << length;
    }
}

TEST(HostileProfiles, LongCommentsAndSectionsAreNoTags) {
    std::string const filling = Repeat("\" ' > ", 20000);
    EXPECT_EQ(OutcomeOf("<?x " + filling + "?><!-- " + filling + "--><Boards><![CDATA[" + filling + "]]>" + filling +
                        BoardEntry("") + "</Boards>"),
              Outcome::BoardEntry);
}

// Comparing these attributes pair by pair would take minutes: the test then fails by its time limit.
TEST(HostileProfiles, EndlessAttributesAreUnreadable) {
    std::string tag = "<Board";
    for (int i = 0; tag.size() < kLargestDocument - 100; ++i) {
        tag += " a" + std::to_string(i) + "=''";
    }
    EXPECT_EQ(OutcomeOf(File(tag + "/>")), Outcome::Unreadable);
}

TEST(HostileProfiles, TagsOfAttributesUpToTheLimitsAreReadInTime) {
    std::string tag = "<Board Id='1'";
    for (int i = 0; tag.size() < kLongestTag - 16; ++i) {
        tag += " a" + std::to_string(i) + "=''";
    }
    tag += "/>";
    EXPECT_EQ(OutcomeOf(File(Repeat(tag, (kLargestDocument - 100) / tag.size()))), Outcome::NoMatch);
}

TEST(HostileProfiles, UnfinishedCharacterReferencesAreReadInTime) {
    std::string const value = Repeat("&#x", (kLongestTag - 40) / 3);
    std::string const entry = "<Board Id='1 " + value + "'/>";
    EXPECT_EQ(OutcomeOf(File(Repeat(entry, (kLargestDocument - 100) / entry.size()))), Outcome::NoMatch);
}

TEST(HostileProfiles, ManyEntriesAreReadInTime) {
    EXPECT_EQ(OutcomeOf(File(Repeat("<B/>", (kLargestDocument - 100) / 4))), Outcome::NoMatch);
}

// ---- Reading the file ----

class OpenedFile {
public:
    explicit OpenedFile(std::string const& text) : file_(std::tmpfile()) {
        std::fwrite(text.data(), 1, text.size(), file_);
        std::rewind(file_);
    }
    ~OpenedFile() { std::fclose(file_); }
    OpenedFile(OpenedFile const&) = delete;
    OpenedFile& operator=(OpenedFile const&) = delete;
    std::FILE* Get() const { return file_; }

private:
    std::FILE* file_;
};

TEST(ProfileFiles, AreReadWholeAsBytes) {
    std::string const text = Repeat("a\r\n\x1A\xFF", 10000) + std::string(1, '\0');
    OpenedFile const file(text);
    EXPECT_EQ(ReadDocument(file.Get()), text);
}

TEST(ProfileFiles, EmptyFileIsAnEmptyText) {
    OpenedFile const file("");
    EXPECT_EQ(ReadDocument(file.Get()), "");
}

TEST(ProfileFiles, MissingFileIsNothing) {
    EXPECT_EQ(ReadDocument(nullptr), std::nullopt);
}

TEST(ProfileFiles, LargestFileIsReadAndALongerOneIsNot) {
    OpenedFile const largest(std::string(kLargestDocument, 'x'));
    EXPECT_EQ(ReadDocument(largest.Get()).value_or("").size(), kLargestDocument);
    OpenedFile const longer(std::string(kLargestDocument + 1, 'x'));
    EXPECT_EQ(ReadDocument(longer.Get()), std::nullopt);
}

TEST(ProfileFiles, DirectoryIsNothing) {
    std::FILE* const directory = std::fopen(".", "rb");
    EXPECT_EQ(ReadDocument(directory), std::nullopt);
    if (directory != nullptr) {
        std::fclose(directory);
    }
}

}  // namespace
}  // namespace gputune::profile
