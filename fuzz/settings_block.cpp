// The settings block: what passes the check with its size survives the text, XML and byte forms.
#include "driver_devmode/field_map.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/diagnostic_text.h"
#include "support/input.h"

static void TryForms(fuzz::Buffer block, TQVDM& settings) {
    const UnicodeString text = settings.ToString(TEXT(" "), 0);
    TXmlNode fields;
    settings.ToXmlNode(&fields);
    DEVMODE_Str(settings.GetDM());

    TQVDM copy(reinterpret_cast<DEVMODEW*>(block.data()));
    copy.FromXmlNode(&fields, nullptr);
    fuzz::Require(fuzz::Same(copy.ToString(TEXT(" "), 0), text), "XML carries every field");
    const UnicodeString previous = copy.FromString(text, 0, TEXT(" "));
    copy.FromString(previous, 0, TEXT(" "));
    DevModeToXmlNode(copy.GetDM(), &fields);
    XmlNodeToDevMode(&fields, copy.GetDM(), nullptr);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Buffer block(data, data + size);
    const int bytes = static_cast<int>(size);
    auto* dm = reinterpret_cast<DEVMODEW*>(block.data());
    if (!QV_DEVMODE::IsValidQV_DEVMODE(dm, bytes)) return 0;
    QV_DEVMODE fresh;
    TQVDM settings(&fresh);
    if (!settings.SetDEVMODE(dm, bytes) || !settings.Encode()) return 0;
    const fuzz::Buffer encoded = block;
    fuzz::Require(settings.Decode() && settings.Encode(), "an encoded block can be decoded");
    fuzz::Require(block == encoded, "the second encoding is the first one");
    TryForms(block, settings);
    return 0;
}
