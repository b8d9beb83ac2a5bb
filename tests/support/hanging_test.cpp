#include <gtest/gtest.h>

#include <future>

// Run to see that the watchdog of main.cpp ends it.
TEST(Watchdog, NamesTheTestThatHangs) { std::promise<void>().get_future().wait(); }
