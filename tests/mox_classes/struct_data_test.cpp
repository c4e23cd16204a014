// Record holders: their three states, sharing, private copies.
#include "mox_classes/containers/struct_data.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/thrown_text.h"

namespace {

struct Pair {
    int number;
    const void* place;
};
constexpr int kPairBytes = static_cast<int>(sizeof(Pair));

class Pairs : public TW32StructData<Pair> {
  public:
    using TW32StructDataBase::SetBufferSize;
    int RecordSize() const { return static_cast<int>(GetRec()->record_size); }
    void Hold(int records) { SetBufferSize(records * kPairBytes, records, kPairBytes); }
};

}  // namespace

TEST(StructData, ThreeStates) {
    Pairs holder;
    holder.Unique();
    EXPECT_TRUE(holder.IsEmpty() && holder.IsSuccess());
    EXPECT_EQ(holder.Count() + holder.Size(), 0);
    EXPECT_EQ(holder.GetErrorCode(), 0u);

    holder.Hold(2);
    EXPECT_TRUE(!holder.IsEmpty() && holder.IsSuccess());
    EXPECT_EQ(holder.RecordSize(), kPairBytes);

    holder.SetErrorCode(5);
    EXPECT_FALSE(holder.IsEmpty() || holder.IsSuccess());
    EXPECT_EQ(holder.Count(), -1);
    EXPECT_EQ(holder.Size(), 4);
    EXPECT_EQ(holder.GetErrorCode(), 5u);
    EXPECT_EQ(holder.RecordSize(), 0);

    Pairs shared(holder);
    holder.Unique();
    EXPECT_EQ(holder.GetErrorCode(), 5u);
    EXPECT_EQ(shared.GetErrorCode(), 5u);

    holder.Hold(1);
    EXPECT_EQ(holder.RecordSize(), kPairBytes);
    EXPECT_EQ(holder.GetErrorCode(), 0u);
    holder.SetBufferSize(0, 0, 0);
    EXPECT_TRUE(holder.IsEmpty());
}

TEST(StructData, WritingToACopyLeavesTheOriginal) {
    Pairs first;
    first.Hold(1);
    first[0].number = 1;
    const Pair* place = &first[0];
    Pairs copy(first);
    EXPECT_EQ(&std::as_const(copy)[0], place) << "reading shares";
    copy[0].number = 2;
    EXPECT_EQ(std::as_const(first)[0].number, 1);
    EXPECT_EQ(&first[0], place) << "a sole holder's block stays where its records point";
    EXPECT_EQ(first.Size(), copy.Size());
    EXPECT_EQ(copy.RecordSize(), kPairBytes);

    copy = std::move(first);
    EXPECT_TRUE(first.IsEmpty());
    EXPECT_EQ(&copy[0], place) << "a moved share is still the only one";
    Pairs taken(std::move(copy));
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_EQ(&taken[0], place);
}

TEST(StructData, ResizingKeepsTheLeadingBytes) {
    Pairs first;
    first.Hold(3);
    for (int i = 0; i < 3; ++i) first[i].number = i;
    Pairs shared(first);
    shared.Hold(2);
    first.Hold(1);
    EXPECT_EQ(shared[1].number, 1);
    EXPECT_EQ(first[0].number, 0);
    EXPECT_EQ(test::ThrownText([&] { first[1].number = 0; }), TEXT("Out of index range"));
    EXPECT_EQ(test::ThrownText([&] { std::as_const(first)[-1]; }), TEXT("Out of index range"));
}
