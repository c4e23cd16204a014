// The strict reading of a request: it says yes, or gives complaints that can be read.
#include "qv_rtl_main/xml_check.h"

#include "support/machine.h"
#include "support/xml_answer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ResetMachine();
    Classes::TMemoryStream request, complaints;
    request.WriteBuffer(data, static_cast<int>(size));
    request.SetPosition(0);
    if (!CheckXmlRequest(&request, &complaints) && fuzz::IsPlain({data, size}))
        fuzz::RequireReadable(complaints);
    return 0;
}
