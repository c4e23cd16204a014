// Values that are changed while memory ends: each is the old one or the new one, and goes on.
#include <gtest/gtest.h>

#include "faults/fault_loop.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/containers/struct_data.h"
#include "mox_classes/format/define_table.h"
#include "mox_classes/format/format_fields.h"

namespace faults {

namespace {

class ChangeValues : public Scenario {
  public:
    ChangeValues() : Scenario(Throws::WithoutMemory) {}
    void Prepare() override {
        text_ = UnicodeString(TEXT("abc"));
        failed_.SetErrorCode(5);
    }
    void Run() override {
        const TW32StructData<DWORD> shared(failed_);
        failed_.SetErrorCode(6);
        fields_.Parse(TEXT("{a%d}{b%x}"));
        const TDefineConst rows[] = {{0, TEXT("P_")}, {1, TEXT("A")}, {2, TEXT("B")}};
        const TDefineTable table(rows);
        text_.Delete(1, 1);
        list_.SetValue(TEXT("k"), TEXT("v"));
    }
    void Check(const Step&) override {
        EXPECT_TRUE(text_ == TEXT("abc") || text_ == TEXT("bc"));
        EXPECT_FALSE(failed_.IsSuccess());
        EXPECT_TRUE(fields_.Set(TEXT("a"))->FName == TEXT("a"));
        EXPECT_TRUE(fields_.Set(TEXT("b"))->FName == TEXT("b"));
        EXPECT_EQ(fields_.Count(), 2);
        EXPECT_TRUE(list_.GetCount() == 0 || list_.GetCommaText() == TEXT("k=v"));
        fields_.Clear();
        list_.Clear();
    }

  private:
    UnicodeString text_;
    TW32StructData<DWORD> failed_;
    TFormatFields fields_;
    TStringList list_;
};

const Tests kChangeValues("values", New<ChangeValues>);

}  // namespace

}  // namespace faults
