// The whole of DoXML on a machine with printers: every request gets a response that can be read.
#include "qv_rtl_main/xml_request.h"

#include "support/machine.h"
#include "support/xml_answer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ResetMachine();
    Classes::TMemoryStream request, response;
    request.WriteBuffer(data, static_cast<int>(size));
    request.SetPosition(0);
    fuzz::Require(DoXML(&request, &response) == 1, "every request is answered");
    if (fuzz::IsPlain({data, size})) fuzz::RequireReadable(response);
    return 0;
}
