// A module of the product that logs: it connects to the logger at its start and disconnects at its
// end.
#include <qv_rtl.h>

int main() {
    QVInitApp(TEXT("log_module"), UnicodeString(), UnicodeString());
    Mox::TLogger& logger = *Mox::GetLogger();
    const UnicodeString source = TEXT("log_module");
    logger.Log('i', source, __LINE__, TEXT("The module is up"), UnicodeString(), nullptr, 0);
    unsigned char answer[] = {0x51, 0x56, 0x00, 0x07};
    logger.Log('X', source, __LINE__, TEXT("The device gave an answer that nobody expects"),
               TEXT("answer"), answer, sizeof(answer));
    QVUninitApp(TEXT("log_module"));
}
