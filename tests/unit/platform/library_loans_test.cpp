#include "platform/library_loans.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace tavira {
namespace {

std::atomic<int> loads;
std::atomic<int> frees;
bool missing;
int library;

CLibraryLoans MakeLoans() {
  loads = 0;
  frees = 0;
  missing = false;
  return {[]() -> void* {
            ++loads;
            return missing ? nullptr : &library;
          },
          [](void* freed) { frees += freed == &library ? 1 : 100; }};
}

TEST(LibraryLoansTest, TwoUsersLoadOnceAndTheLastFrees) {
  CLibraryLoans loans = MakeLoans();
  EXPECT_EQ(&library, loans.Take());
  EXPECT_EQ(&library, loans.Take());
  loans.GiveBack();
  EXPECT_EQ(1, loads);
  EXPECT_EQ(0, frees);
  loans.GiveBack();
  EXPECT_EQ(1, frees);
  EXPECT_EQ(&library, loans.Take());
  loans.GiveBack();
  EXPECT_EQ(2, loads);
  EXPECT_EQ(2, frees);
}

TEST(LibraryLoansTest, AMissingLibraryIsLookedForAgain) {
  CLibraryLoans loans = MakeLoans();
  missing = true;
  EXPECT_EQ(nullptr, loans.Take());
  missing = false;
  EXPECT_EQ(&library, loans.Take());
  loans.GiveBack();
  EXPECT_EQ(2, loads);
  EXPECT_EQ(1, frees);
}

TEST(LibraryLoansTest, ThreadsShareIt) {
  CLibraryLoans loans = MakeLoans();
  std::atomic<bool> failed = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 1000; ++round) {
        failed = loans.Take() != &library || loads <= frees || failed;
        loans.GiveBack();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_FALSE(failed);
  EXPECT_EQ(loads, frees);
}

}  // namespace
}  // namespace tavira
