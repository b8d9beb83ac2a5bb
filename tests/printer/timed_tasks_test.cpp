// Tasks that share a few threads.

#include "printer/timed_tasks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using Nuv::Printer::TimedTasks;
using std::chrono::milliseconds;
using std::chrono::seconds;

// Tasks that last until they are let go, and how many have begun.
class Held {
 public:
  ~Held() { LetGo(1000); }
  void Add(int count, bool isLong = false) {
    for (int i = 0; i < count; ++i) {
      TimedTasks::Instance().Add(
          Nuv::Platform::SystemClock().Now(),
          [this] {
            std::unique_lock<std::mutex> lock(mutex_);
            ++begun_;
            changed_.notify_all();
            changed_.wait(lock, [this] { return free_ > 0; });
            --free_;
            ++ended_;
            changed_.notify_all();
          },
          isLong);
    }
    added_ += count;
  }
  bool Begin(int count, milliseconds within = seconds(20)) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, within, [&] { return begun_ >= count; });
  }
  void LetGo(int count) {
    std::unique_lock<std::mutex> lock(mutex_);
    free_ += count;
    changed_.notify_all();
    if (count >= added_) changed_.wait(lock, [this] { return ended_ == added_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int begun_ = 0;
  int free_ = 0;
  int ended_ = 0;
  int added_ = 0;
};

TEST(TimedTasksTest, OneThatTakesLongGivesItsPlaceUp) {
  for (int round = 0; round < 2; ++round) {
    Held held;
    held.Add(16);
    EXPECT_TRUE(held.Begin(7));
    EXPECT_FALSE(held.Begin(8, milliseconds(300))) << "more than the places";
    held.LetGo(1);
    EXPECT_TRUE(held.Begin(8)) << "a place is free";
    EXPECT_FALSE(held.Begin(9, milliseconds(100)));
    EXPECT_TRUE(held.Begin(14)) << "those that last count no longer";
    EXPECT_TRUE(held.Begin(16));
  }
}

TEST(TimedTasksTest, OneThatLastsDoesNotOpenTheDoorToAll) {
  Held held;
  held.Add(1);
  EXPECT_TRUE(held.Begin(1));
  EXPECT_FALSE(held.Begin(2, milliseconds(1200))) << "it has given its place up";
  held.Add(12);
  EXPECT_TRUE(held.Begin(8));
  EXPECT_FALSE(held.Begin(9, milliseconds(300)));
}

TEST(TimedTasksTest, WhatIsLongFromTheStartTakesNoPlace) {
  Held held;
  held.Add(12, true);
  EXPECT_TRUE(held.Begin(12, milliseconds(900)));
  held.Add(7);
  EXPECT_TRUE(held.Begin(19, milliseconds(900)));
}

TEST(TimedTasksTest, AreRunAlsoWhenTheThreadsHaveEnded) {
  for (int round = 0; round < 2; ++round) {
    Held held;
    held.Add(2);
    EXPECT_TRUE(held.Begin(2));
    held.LetGo(2);
    // Longer than a thread waits that has nothing to do.
    if (round == 0) std::this_thread::sleep_for(seconds(21));
  }
}

TEST(TimedTasksTest, TheEarliestComesFirst) {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<int> order;
  const auto now = Nuv::Platform::SystemClock().Now();
  for (const int due : {300, 100, 200, 0}) {
    TimedTasks::Instance().Add(now + milliseconds(due), [&, due] {
      const std::lock_guard<std::mutex> lock(mutex);
      order.push_back(due);
      changed.notify_all();
    });
  }
  std::unique_lock<std::mutex> lock(mutex);
  EXPECT_TRUE(changed.wait_for(lock, seconds(20), [&] { return order.size() == 4; }));
  EXPECT_THAT(order, ::testing::ElementsAre(0, 100, 200, 300));
}

}  // namespace
