// The strict reading of a request: it says yes, or gives diagnostics that can be read.
#include "qv_rtl_main/xml_check.h"

#include "support/machine.h"
#include "support/xml_answer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ResetMachine();
    Classes::TMemoryStream request, diagnostics;
    request.WriteBuffer(data, static_cast<int>(size));
    request.SetPosition(0);
    if (!CheckXmlRequest(&request, &diagnostics) && fuzz::IsPlain({data, size}))
        fuzz::RequireReadable(diagnostics);
    return 0;
}
