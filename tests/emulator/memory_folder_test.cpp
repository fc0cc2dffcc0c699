#include "emulator/memory/memory_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "emulator/memory/folder_lock.h"
#include "emulator/memory/folder_printer.h"
#include "test_printer.h"

namespace lxemu {
namespace {

namespace fs = std::filesystem;

class MemoryFolder : public testing::Test {
 protected:
  MemoryFolder() : folder(fs::temp_directory_path() / ("lxemu_" + std::to_string(std::random_device{}()))) {}
  ~MemoryFolder() override {
    std::error_code error;
    fs::remove_all(folder, error);
  }

  fs::path folder;
};

TEST_F(MemoryFolder, KeepsWhatThePrinterKeepsWithoutPower) {
  {
    tagTestPrinter first;
    CMemoryFolder memory(folder);
    memory.Load(first.printer);
    first("^XA^S(CLR,Z,300^XZ^XA^JUS^XZ^XA^S(CLR,P,150^XZ");
    first.printer.SetSetting("CUL,L", std::string("a=b\\\n\xFF"));
    first("\036CT%");  // in force, not saved
    first.printer.PutFile("E:CON.PNG", std::string("\0\r\n\x1A", 4), true);
    first.printer.PutFile("Z:\x83g\\1.CNV", "table");
    first.printer.PutFile("R:TEMP.PNG", "volatile");
    EXPECT_TRUE(memory.Save(first.printer));
  }
  tagTestPrinter second;
  CMemoryFolder(folder).Load(second.printer);
  EXPECT_EQ(second.printer.Setting("CLR,Z"), "300");
  EXPECT_EQ(second.printer.Setting("CLR,P"), "600");
  EXPECT_EQ(second.printer.Setting("CUL,L"), "a=b\\\n\xFF");
  EXPECT_EQ(second.printer.Setting("CCC,T"), "25");
  EXPECT_EQ(second.printer.File("E:CON.PNG"), std::string("\0\r\n\x1A", 4));
  EXPECT_TRUE(second.printer.IsProtected("E:CON.PNG"));
  EXPECT_EQ(second.printer.File("Z:\x83g\\1.CNV"), "table");
  EXPECT_FALSE(second.printer.IsProtected("Z:\x83g\\1.CNV"));
  EXPECT_EQ(second.printer.File("R:TEMP.PNG"), std::nullopt);
  second.printer.PowerCycle();
  EXPECT_EQ(second.printer.Setting("CCC,T"), "7E");
}

TEST_F(MemoryFolder, WritesOnlyWhatChanged) {
  tagTestPrinter printer;
  CMemoryFolder memory(folder);
  memory.Load(printer.printer);
  EXPECT_TRUE(memory.Save(printer.printer));
  EXPECT_FALSE(fs::exists(folder));  // nothing to keep, nothing made
  printer.printer.PutFile("E:A.PNG", "a");
  printer.printer.PutFile("E:B.PNG", "b");
  memory.Save(printer.printer);
  EXPECT_FALSE(fs::exists(folder / "settings.txt"));
  // Marks that any rewriting would replace.
  for (const char* name : {"A.PNG", "B.PNG"}) {
    std::ofstream(folder / "E" / name) << "mark";
  }
  printer.printer.PutFile("E:B.PNG", "c");
  printer("^XA^S(CLR,Z,300^JUS^XZ");
  EXPECT_TRUE(memory.Save(printer.printer));
  EXPECT_EQ(ReadHostFile(folder / "E" / "A.PNG"), "mark");
  EXPECT_EQ(ReadHostFile(folder / "E" / "B.PNG"), "c");
  EXPECT_TRUE(fs::exists(folder / "settings.txt"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);  // nothing left over
}

TEST_F(MemoryFolder, RemovesDeletedFilesAlsoWhenTheNameComesBack) {
  tagTestPrinter printer;
  CMemoryFolder memory(folder);
  printer.printer.PutFile("E:A.PNG", "a");
  printer.printer.PutFile("E:B.PNG", "b", true);
  memory.Save(printer.printer);
  printer("^XA^JBE^XZ~DYE:a.png,B,P,3,0,new");
  EXPECT_TRUE(memory.Save(printer.printer));
  tagTestPrinter second;
  CMemoryFolder(folder).Load(second.printer);
  EXPECT_EQ(second.printer.File("E:A.PNG"), "new");
  EXPECT_EQ(second.printer.File("E:B.PNG"), std::nullopt);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder / "E"), fs::directory_iterator()), 1);
}

TEST_F(MemoryFolder, TakesFilesThatSomebodyPutThereAndPassesOverOthers) {
  fs::create_directories(folder / "E" / "FOLDER.PNG");
  std::ofstream(folder / "E" / "LOGO.PNG") << "dropped";
  std::ofstream(folder / "E" / "much too long a name.png") << "x";
  std::ofstream(folder / "E" / "BAD%.PNG") << "x";
  std::ofstream(folder / "settings.txt", std::ios::binary)
      << "CLR,Z=300\r\nnonsense\nXYZ,1=2\nCLR,P=\\q\nCCC,T=zz\n";
  std::ofstream(folder / "attributes.txt") << "E:LOGO.PNG\nE:NONE.PNG\n";
  tagTestPrinter printer;
  CMemoryFolder(folder).Load(printer.printer);
  EXPECT_EQ(printer.printer.File("E:LOGO.PNG"), "dropped");
  EXPECT_TRUE(printer.printer.IsProtected("E:LOGO.PNG"));
  EXPECT_EQ(printer.printer.State().files.Matching('E', "*").size(), 1u);
  EXPECT_EQ(printer.printer.Setting("CLR,Z"), "300");
  EXPECT_EQ(printer.printer.Setting("CLR,P"), "600");
  EXPECT_EQ(printer.printer.Setting("CCC,T"), "7E");
}

TEST_F(MemoryFolder, TwoProcessesOnOneFolderLoseNothing) {
  tagTestPrinter first;
  tagTestPrinter second;
  CMemoryFolder first_memory(folder);
  CMemoryFolder second_memory(folder);
  EXPECT_EQ(first_memory.Prepare(), "");
  EXPECT_TRUE(fs::is_empty(folder));
  first_memory.Load(first.printer);
  second_memory.Load(second.printer);
  for (int i = 0; i < 2; ++i) {
    first("^XA^S(CLR,Z,30" + std::to_string(i) + "^JUS^XZ~DYE:A.PNG,B,P,1,0,a");
    second("^XA^S(CLR,P,15" + std::to_string(i) + "^JUS^XZ~DYE:B.PNG,B,P,1,0,b");
    EXPECT_TRUE(first_memory.Save(first.printer) && second_memory.Save(second.printer));
    // Each protects its own file, then takes that back.
    first.printer.SetProtected("E:A.PNG", i == 0);
    second.printer.SetProtected("E:B.PNG", true);
    EXPECT_TRUE(first_memory.Save(first.printer) && second_memory.Save(second.printer));
    EXPECT_EQ(ReadHostFile(folder / "attributes.txt"), i == 0 ? "E:A.PNG\nE:B.PNG\n" : "E:B.PNG\n");
  }
  tagTestPrinter third;
  CMemoryFolder(folder).Load(third.printer);
  EXPECT_EQ(third.printer.Setting("CLR,Z"), "301");
  EXPECT_EQ(third.printer.Setting("CLR,P"), "151");
  EXPECT_TRUE(third.printer.File("E:A.PNG") && third.printer.File("E:B.PNG"));
}

TEST_F(MemoryFolder, OneAtATimeWrites) {
  fs::create_directories(folder);
  auto held = std::make_unique<CFolderLock>(folder);
  std::atomic<bool> is_released = false;
  std::jthread other([&] {
    const CFolderLock waited(folder);
    EXPECT_TRUE(is_released);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  is_released = true;
  held.reset();
  other.join();
  EXPECT_TRUE(fs::is_empty(folder)) << "nothing left over";
}

TEST_F(MemoryFolder, ReportsFailureAndTriesAgain) {
  std::ofstream(folder) << "a file where the folder should be";
  tagTestPrinter printer;
  CMemoryFolder memory(folder);
  EXPECT_NE(memory.Prepare().find("cannot be written"), std::string::npos);
  memory.Load(printer.printer);
  printer.printer.PutFile("E:A.PNG", "a");
  EXPECT_FALSE(memory.Save(printer.printer));
  fs::remove(folder);
  EXPECT_TRUE(memory.Save(printer.printer));
  EXPECT_EQ(ReadHostFile(folder / "E" / "A.PNG"), "a");
}

TEST_F(MemoryFolder, SavesThatFailAreToldOnceUntilOneHasWorked) {
  CFolderPrinter printer(folder, [] { return std::uint64_t{0}; });
  for (const char* file : {"E:A.PNG", "E:B.PNG"}) {
    fs::remove_all(folder);
    std::ofstream(folder) << "a file where the folder should be";
    printer.Printer().PutFile(file, "a");
    EXPECT_NE(printer.Save().find("not kept"), std::string::npos) << file;
    EXPECT_EQ(printer.Save(), "") << file;
    fs::remove(folder);
    EXPECT_EQ(printer.Save(), "") << file;
    EXPECT_TRUE(fs::exists(folder / "E")) << file;
  }
}

}  // namespace
}  // namespace lxemu
