// Objects for the tests of the debugger's views: one of each type, and wrong ones. The debugger
// stops in Stop() and goes one frame up.
#include <qv_rtl.h>

#include <cstring>

namespace {

constexpr std::uintptr_t kNowhere = 0x10;

volatile int stopped = 0;

[[gnu::noinline]] void Stop() {
    stopped = 1;
}

// The object's bytes as they are before its construction or after a stray write; never destroyed.
template <class T>
union TRaw {
    TRaw() { std::memset(static_cast<void*>(this), 0, sizeof(*this)); }
    ~TRaw() {}
    T value;
};

template <class T>
void PutPointer(T& object, std::size_t offset, std::uintptr_t pointer) {
    std::memcpy(reinterpret_cast<char*>(&object) + offset, &pointer, sizeof(pointer));
}

TW32StructData<PRINTER_INFO_2W> Failed() {
    TW32StructData<PRINTER_INFO_2W> records;
    records.SetErrorCode(ERROR_INVALID_PRINTER_NAME);
    return records;
}

// A record with its name behind it, as the spooler fills it.
class TFilled : public TW32StructData<MONITOR_INFO_2W> {
  public:
    explicit TFilled(const WCHAR* name) {
        SetBufferSize(sizeof(MONITOR_INFO_2W), 1, sizeof(MONITOR_INFO_2W));
        static_cast<MONITOR_INFO_2W*>(FData)->pName = const_cast<WCHAR*>(name);
    }
};

void Show() {
    const UnicodeString empty;
    const UnicodeString text(TEXT("caf\u00e9 \"\t\x1\xD83D\xDE00"));
    const UnicodeString lone(static_cast<WCHAR>(0xD800));
    const UnicodeString long_text = UnicodeString::StringOfChar('x', 1000);
    TRaw<UnicodeString> wild_text;
    PutPointer(wild_text, 0, kNowhere);
    static const unsigned char noise[32] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    TRaw<UnicodeString> noise_text;
    PutPointer(noise_text, 0, reinterpret_cast<std::uintptr_t>(noise + 16));

    TStringList list;
    list.Add(TEXT("one"));
    list.AddObject(TEXT("two"), &list);
    TRaw<TStringList> wild_list;
    std::memset(static_cast<void*>(&wild_list), 0x5A, sizeof(wild_list));

    TXmlDoc document(TEXT("<?xml version=\"1.0\"?><a k=\"v\"><b>text</b><c/></a>"));
    TXmlNode& node = *document.FRoot;
    TRaw<TXmlNode> wild_node;
    std::memset(static_cast<void*>(&wild_node), 0x5A, sizeof(wild_node));
    TRaw<TXmlDoc> raw_document;

    Mox::TLogMsg& message = *Mox::TLogMsg::Alloc();
    message.time = {0xD53E8000, 0x019DB1DE};
    message.level = 'X';
    message.processId = message.threadId = 4711;
    message.line = 84;
    message.source = TEXT("views");
    message.text = TEXT("The device is gone");
    message.dataLabel = TEXT("answer");
    unsigned char answer[] = {0x51, 0x56};
    message.data = answer;
    message.dataSize = -2;
    TRaw<Mox::TLogMsg> raw_message;

    const TW32StructData<PRINTER_INFO_2W> failed = Failed();
    const TFilled filled(TEXT("Fax Port"));
    const TW32StructData<MONITOR_INFO_2W>& records = filled;
    TRaw<TW32StructData<MONITOR_INFO_2W>> wild_records;
    PutPointer(wild_records, 0, kNowhere);

    TQVDM settings;
    settings.Directory = TEXT("C:\\fax");
    settings.Encode();
    QV_DEVMODE& block = *settings.GetDM();
    QV_DEVMODE wrong_offset;
    wrong_offset.exOut.DirectoryOffset = 3000;
    wrong_offset.exRun.TargetOffset = -1;
    TRaw<QV_DEVMODE> raw_block;
    TRaw<TQVDM> wild_settings;
    std::memset(static_cast<void*>(&wild_settings), 0x5A, sizeof(wild_settings));

    Stop();
    static_cast<void>(empty.Length() + text.Length() + node.ChildCount() + block.Size() +
                      records.Count() + failed.Count());
    message.Free();
}

}  // namespace

int main() {
    Show();
}
