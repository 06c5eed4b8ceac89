// The run's value stack: a frame keeps its slots while deeper frames come and go, whatever block
// they take, every frame starts Empty, and what a popped frame held is released.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "script/run_core.h"

namespace corvane::script {
namespace {

TEST(SlotStack, FramesKeepTheirSlotsAndStartEmpty) {
  // Frame sizes, pushed in order (each inside the one before) and popped in reverse.
  // clang-format off
  const std::vector<size_t> cases[] = {
      {3, 5, 2},          // one block
      {250, 200, 10},     // the second frame opens the next block
      {5000, 3},          // a frame larger than a block
      {256, 512, 1024, 1, 0},
  };
  // clang-format on
  for (const std::vector<size_t>& sizes : cases) {
    SCOPED_TRACE(::testing::PrintToString(sizes));
    SlotStack<Variant> stack;
    std::vector<SlotStack<Variant>::Mark> marks;
    std::vector<Variant*> frames;
    for (size_t k = 0; k < sizes.size(); ++k) {
      marks.push_back(stack.Save());
      Variant* slots = stack.Push(sizes[k]);
      for (size_t i = 0; i < sizes[k]; ++i) ASSERT_TRUE(slots[i].IsEmpty()) << k << " " << i;
      if (sizes[k] > 1) slots[0] = Variant(std::string(40, static_cast<char>('a' + k)));  // text on the heap
      if (sizes[k] > 0) slots[sizes[k] - 1] = Variant(static_cast<int32_t>(k));
      frames.push_back(slots);
    }
    for (size_t k = sizes.size(); k-- > 0;) {
      if (sizes[k] > 1) {
        EXPECT_EQ(frames[k][0].Text(), std::string(40, static_cast<char>('a' + k)));
      }
      if (sizes[k] > 0) {
        EXPECT_EQ(frames[k][sizes[k] - 1].Text(), std::to_string(k));
      }
      stack.Restore(marks[k], frames[k], sizes[k]);
      // The same frame pushed again takes the same slots, emptied.
      Variant* again = stack.Push(sizes[k]);
      EXPECT_EQ(again, frames[k]);
      for (size_t i = 0; i < sizes[k]; ++i) ASSERT_TRUE(again[i].IsEmpty()) << k << " " << i;
      stack.Restore(marks[k], again, sizes[k]);
    }
  }
}

}  // namespace
}  // namespace corvane::script
