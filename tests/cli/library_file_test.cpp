#include "library_file/library_file.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <random>

namespace tvmgr {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void Put(std::string& bytes, std::size_t offset, std::uint32_t value, std::size_t size = 4) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
  }
}

constexpr std::size_t kHeader = 0x80;

// A 64-bit DLL with one section, at address 0x1000 and place 0x200, which holds the names One and Two.
std::string Library() {
  std::string bytes(0x300, '\0');
  bytes.replace(0, 2, "MZ");
  Put(bytes, 0x3C, kHeader);
  bytes.replace(kHeader, 2, "PE");
  Put(bytes, kHeader + 4, 0x8664, 2);
  Put(bytes, kHeader + 6, 1, 2);
  Put(bytes, kHeader + 20, 240, 2);
  Put(bytes, kHeader + 22, 0x2022, 2);
  Put(bytes, kHeader + 24, 0x20B, 2);
  Put(bytes, kHeader + 24 + 112, 0x1000);
  const std::size_t section = kHeader + 24 + 240;
  Put(bytes, section + 12, 0x1000);
  Put(bytes, section + 16, 0x100);
  Put(bytes, section + 20, 0x200);
  Put(bytes, 0x200 + 24, 2);
  Put(bytes, 0x200 + 32, 0x1040);
  Put(bytes, 0x240, 0x1050);
  Put(bytes, 0x244, 0x1054);
  bytes.replace(0x250, 7, std::string("One\0Two", 7));
  return bytes;
}

TEST(LibraryFile, KnowsWhatStandsInTheWay) {
  const char* const both[] = {"One", "Two"};
  const char* const more[] = {"Two", "Three"};
  const char* const other[] = {"Three"};
  EXPECT_EQ(InspectLibrary(Library(), both).kind, ELibraryFile::kGood);
  EXPECT_EQ(InspectLibrary(Library(), more).kind, ELibraryFile::kIncomplete);
  EXPECT_THAT(InspectLibrary(Library(), more).missing, ElementsAre("Three"));
  EXPECT_EQ(InspectLibrary(Library(), other).kind, ELibraryFile::kOtherLibrary);
  const struct {
    std::size_t offset;
    std::uint32_t value;
    ELibraryFile kind;
  } changes[] = {{4, 0x14C, ELibraryFile::k32Bit},         {24, 0x10B, ELibraryFile::k32Bit},
                 {4, 0xAA64, ELibraryFile::kOtherMachine}, {22, 0x0022, ELibraryFile::kNoLibrary},
                 {0, 0, ELibraryFile::kNoLibrary},         {6, 0, ELibraryFile::kOtherLibrary}};
  for (const auto& change : changes) {
    std::string bytes = Library();
    Put(bytes, kHeader + change.offset, change.value, 2);
    EXPECT_EQ(InspectLibrary(bytes, both).kind, change.kind) << change.offset;
  }
  EXPECT_EQ(InspectLibrary("no DLL", both).kind, ELibraryFile::kNoLibrary);
  EXPECT_EQ(InspectLibrary("", both).kind, ELibraryFile::kNoLibrary);
}

TEST(LibraryFile, DamagedFilesAreReadWithinTheirBytes) {
  const char* const both[] = {"One", "Two"};
  const std::string library = Library();
  for (std::size_t size = 0; size < library.size(); ++size) {
    const tagLibraryFile cut = InspectLibrary(library.substr(0, size), both);
    EXPECT_EQ(cut.kind == ELibraryFile::kGood, size >= 0x257) << size;
  }
  std::mt19937 random(1);
  for (int i = 0; i < 2'000; ++i) {
    std::string bytes = library;
    for (int k = 0; k < 3; ++k) {
      bytes[random() % 0x260] = static_cast<char>(random() % 4 == 0 ? 0xFF : random());
    }
    InspectLibrary(bytes, both);
  }
}

TEST(LibraryFile, VersionAndMarkOfADownloadAreReadFromBytes) {
  std::string resource;
  for (const char c : std::string("VS_VERSION_INFO")) {
    resource += {c, '\0'};
  }
  const std::string name = resource;
  resource += std::string("\0\0\0\0\xBD\x04\xEF\xFE\0\0\1\0\2\0\1\0\x04\1\3\0", 20);
  EXPECT_EQ(FileVersion("MZ" + name + " twice " + resource), "1.2.3.260");
  for (std::size_t size = 0; size < resource.size(); ++size) {
    EXPECT_EQ(FileVersion(resource.substr(0, size)), "") << size;
  }
  EXPECT_TRUE(IsMarkedAsDownload("[ZoneTransfer]\r\nZoneId=3\r\nHostUrl=about:internet\r\n"));
  for (const char* const other : {"", "ZoneId=", "[ZoneTransfer]\r\nZoneId=1\r\n", "zone 3"}) {
    EXPECT_FALSE(IsMarkedAsDownload(other)) << other;
  }
}

}  // namespace
}  // namespace tvmgr
