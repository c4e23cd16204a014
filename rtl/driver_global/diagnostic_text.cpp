#include "driver_global/diagnostic_text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <span>

#include "driver_devmode/qv_devmode.h"
#include "driver_devmode/qvdm.h"
#include "mox_classes/text/sysutils.h"

namespace {

using Sysutils::UnicodePrintf;

struct TCodeName {
    long long code;
    const WCHAR* name;
};

constexpr TCodeName kCapabilities[] = {
    {1, TEXT("DC_FIELDS")},
    {2, TEXT("DC_PAPERS")},
    {3, TEXT("DC_PAPERSIZE")},
    {4, TEXT("DC_MINEXTENT")},
    {5, TEXT("DC_MAXEXTENT")},
    {6, TEXT("DC_BINS")},
    {7, TEXT("DC_DUPLEX")},
    {8, TEXT("DC_SIZE")},
    {9, TEXT("DC_EXTRA")},
    {10, TEXT("DC_VERSION")},
    {11, TEXT("DC_DRIVER")},
    {12, TEXT("DC_BINNAMES")},
    {13, TEXT("DC_ENUMRESOLUTIONS")},
    {14, TEXT("DC_FILEDEPENDENCIES")},
    {15, TEXT("DC_TRUETYPE")},
    {16, TEXT("DC_PAPERNAMES")},
    {17, TEXT("DC_ORIENTATION")},
    {18, TEXT("DC_COPIES")},
    {19, TEXT("DC_BINADJUST")},
    {20, TEXT("DC_EMF_COMPLIANT")},
    {21, TEXT("DC_DATATYPE_PRODUCED")},
    {22, TEXT("DC_COLLATE")},
    {23, TEXT("DC_MANUFACTURER")},
    {24, TEXT("DC_MODEL")},
    {25, TEXT("DC_PERSONALITY")},
    {26, TEXT("DC_PRINTRATE")},
    {27, TEXT("DC_PRINTRATEUNIT")},
    {28, TEXT("DC_PRINTERMEM")},
    {29, TEXT("DC_MEDIAREADY")},
    {30, TEXT("DC_STAPLE")},
    {31, TEXT("DC_PRINTRATEPPM")},
    {32, TEXT("DC_COLORDEVICE")},
    {33, TEXT("DC_NUP")},
    {34, TEXT("DC_MEDIATYPENAMES")},
    {35, TEXT("DC_MEDIATYPES")},
};

constexpr TCodeName kDocumentEvents[] = {
    {1, TEXT("DOCUMENTEVENT_CREATEDCPRE")},   {2, TEXT("DOCUMENTEVENT_CREATEDCPOST")},
    {3, TEXT("DOCUMENTEVENT_RESETDCPRE")},    {4, TEXT("DOCUMENTEVENT_RESETDCPOST")},
    {5, TEXT("DOCUMENTEVENT_STARTDOC")},      {6, TEXT("DOCUMENTEVENT_STARTPAGE")},
    {7, TEXT("DOCUMENTEVENT_ENDPAGE")},       {8, TEXT("DOCUMENTEVENT_ENDDOC")},
    {9, TEXT("DOCUMENTEVENT_ABORTDOC")},      {10, TEXT("DOCUMENTEVENT_DELETEDC")},
    {11, TEXT("DOCUMENTEVENT_ESCAPE")},       {12, TEXT("DOCUMENTEVENT_ENDDOCPOST")},
    {13, TEXT("DOCUMENTEVENT_STARTDOCPOST")}, {14, TEXT("DOCUMENTEVENT_QUERYFILTER")},
};

constexpr TCodeName kConvertModes[] = {
    {1, TEXT("CDM_CONVERT")}, {2, TEXT("CDM_CONVERT351")}, {4, TEXT("CDM_DRIVER_DEFAULT")}};

// The order of the rows is the order in the text.
constexpr TCodeName kPropertyModes[] = {{0x10, TEXT("DM_ADVANCED")},
                                        {0x08, TEXT("DM_MODIFY")},
                                        {0x04, TEXT("DM_PROMPT")},
                                        {0x20, TEXT("DM_NOPERMISSION")},
                                        {0x02, TEXT("DM_COPY")}};

// Some names end in a blank. They always have, and log filters rely on it.
constexpr TCodeName kOrientations[] = {{1, TEXT("Portrait")}, {2, TEXT("LANDSCAPE")}};
constexpr TCodeName kSources[] = {
    {1, TEXT("DMBIN_ONLYONE ")},   {2, TEXT("DMBIN_LOWER")},          {3, TEXT("DMBIN_MIDDLE")},
    {4, TEXT("DMBIN_MANUAL ")},    {5, TEXT("DMBIN_ENVELOPE")},       {6, TEXT("DMBIN_ENVMANUAL ")},
    {7, TEXT("DMBIN_AUTO")},       {8, TEXT("DMBIN_TRACTOR")},        {9, TEXT("DMBIN_SMALLFMT ")},
    {10, TEXT("DMBIN_LARGEFMT ")}, {11, TEXT("DMBIN_LARGECAPACITY")}, {14, TEXT("DMBIN_CASSETTE ")},
    {15, TEXT("DMBIN_FORMSOURCE")}};
constexpr TCodeName kColors[] = {{1, TEXT("DMCOLOR_MONOCHROME ")}, {2, TEXT("DMCOLOR_COLOR")}};
constexpr TCodeName kNups[] = {{1, TEXT("DMNUP_SYSTEM")}, {2, TEXT("DMNUP_ONEUP ")}};

UnicodeString NameOf(std::span<const TCodeName> names, long long code) {
    const auto row = std::find_if(names.begin(), names.end(),
                                  [code](const TCodeName& n) { return n.code == code; });
    return row != names.end() ? UnicodeString(row->name)
                              : UnicodePrintf(TEXT("Unknown(%I64d)"), code);
}

UnicodeString DocPropModeStr(DWORD mode) {
    if (mode == 0) return TEXT("NULL");
    UnicodeString text;
    for (const TCodeName& flag : kPropertyModes) {
        if ((mode & static_cast<DWORD>(flag.code)) == 0) continue;
        if (text.Length() > 0) text += TEXT("|");
        text += flag.name;
    }
    return text.Length() > 0 ? text : UnicodePrintf(TEXT("Unknown(%lu)"), mode);
}

DWORD Low32(const void* pointer) {
    return static_cast<DWORD>(reinterpret_cast<UINT_PTR>(pointer));
}

// The text of a fixed field. The terminator may be missing.
UnicodeString FieldText(const WCHAR* field, int capacity) {
    return UnicodeString(field, std::find(field, field + capacity, WCHAR{0}) - field);
}

bool IsAllZero(const DEVMODEW& dm) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&dm);
    return std::all_of(bytes, bytes + sizeof(dm), [](BYTE b) { return b == 0; });
}

// The DEVMODE of a decoded job record follows its texts and may lie at any even address. The copy
// ends where the block's own sizes say, with zeros behind it; a dmSize of 0 stands for the whole
// public part.
class TAlignedCopy {
  public:
    explicit TAlignedCopy(const void* dm) {
        constexpr std::size_t kSizesEnd = offsetof(DEVMODEW, dmFields);
        std::memcpy(bytes_, dm, kSizesEnd);
        const std::size_t public_size = Block().dmSize == 0 ? sizeof(DEVMODEW) : Block().dmSize;
        const std::size_t stated = public_size + Block().dmDriverExtra;
        std::memcpy(bytes_, dm, std::clamp(stated, kSizesEnd, sizeof(bytes_)));
    }
    QV_DEVMODE& Block() { return *reinterpret_cast<QV_DEVMODE*>(bytes_); }

  private:
    alignas(QV_DEVMODE) BYTE bytes_[sizeof(QV_DEVMODE)] = {};
};

// One "name=value " pair of a field. A '*' marks a field whose bit in dmFields is set.
class TFieldLine {
  public:
    explicit TFieldLine(DWORD fields) : fields_(fields) {}
    template <class Value>
    void Add(DWORD bit, const WCHAR* name, const WCHAR* value_format, const Value& value) {
        text_ += (fields_ & bit) != 0 ? TEXT("*") : TEXT("");
        text_ += name;
        text_ += TEXT("=");
        text_.cat_printf(value_format, value);
        text_ += TEXT(" ");
    }
    UnicodeString& Text() { return text_; }

  private:
    DWORD fields_;
    UnicodeString text_;
};

void AddPublicFields(TFieldLine& line, const DEVMODEW& dm) {
    line.Add(DM_ORIENTATION, TEXT("Orientation"), TEXT("%s"),
             NameOf(kOrientations, dm.dmOrientation));
    line.Add(DM_PAPERSIZE, TEXT("PaperSize"), TEXT("%hd"), dm.dmPaperSize);
    line.Add(DM_PAPERLENGTH, TEXT("PaperLength"), TEXT("%hd"), dm.dmPaperLength);
    line.Add(DM_PAPERWIDTH, TEXT("PaperWidth"), TEXT("%hd"), dm.dmPaperWidth);
    line.Add(DM_SCALE, TEXT("Scale"), TEXT("%hd"), dm.dmScale);
    line.Add(DM_COPIES, TEXT("Copies"), TEXT("%hd"), dm.dmCopies);
    line.Add(DM_DEFAULTSOURCE, TEXT("DefaultSource"), TEXT("%s"),
             NameOf(kSources, dm.dmDefaultSource));
    line.Add(DM_PRINTQUALITY, TEXT("PrintQuality"), TEXT("%hd"), dm.dmPrintQuality);
    line.Add(DM_COLOR, TEXT("Color"), TEXT("%s"), NameOf(kColors, dm.dmColor));
    line.Add(DM_DUPLEX, TEXT("Duplex"), TEXT("%hd"), dm.dmDuplex);
    line.Add(DM_YRESOLUTION, TEXT("YResolution"), TEXT("%hd"), dm.dmYResolution);
    line.Add(DM_TTOPTION, TEXT("TTOption"), TEXT("%hd"), dm.dmTTOption);
    line.Add(DM_COLLATE, TEXT("Collate"), TEXT("%hd"), dm.dmCollate);
    line.Add(DM_FORMNAME, TEXT("FormName"), TEXT("\"%s\""), FieldText(dm.dmFormName, CCHFORMNAME));
    line.Add(DM_NUP, TEXT("Nup"), TEXT("%s"), NameOf(kNups, dm.dmNup));
    line.Add(DM_ICMMETHOD, TEXT("ICMMethod"), TEXT("%lu"), dm.dmICMMethod);
    line.Add(DM_ICMINTENT, TEXT("ICMIntent"), TEXT("%lu"), dm.dmICMIntent);
    line.Add(DM_MEDIATYPE, TEXT("MediaType"), TEXT("%lu"), dm.dmMediaType);
    line.Add(DM_DITHERTYPE, TEXT("DitherType"), TEXT("%lu"), dm.dmDitherType);
    line.Text().cat_printf(TEXT("Reserved1=%lu Reserved2=%lu "), dm.dmReserved1, dm.dmReserved2);
    line.Add(DM_PANNINGWIDTH, TEXT("PanningWidth"), TEXT("%lu"), dm.dmPanningWidth);
    line.Add(DM_PANNINGHEIGHT, TEXT("PanningHeight"), TEXT("%lu"), dm.dmPanningHeight);
}

}  // namespace

UnicodeString DEVMODE_Str(DEVMODEW* dm) {
    if (dm == nullptr) return TEXT("NULL");
    TAlignedCopy copy(dm);
    QV_DEVMODE& block = copy.Block();
    if (IsAllZero(block)) return TEXT("Empty");
    TFieldLine line(block.dmFields);
    line.Text().printf(
        TEXT("DeviceName=\"%s\" SpecVersion=%hu DriverVersion=%hu Size=%hu DriverExtra=%hu "),
        FieldText(block.dmDeviceName, CCHDEVICENAME), block.dmSpecVersion, block.dmDriverVersion,
        block.dmSize, block.dmDriverExtra);
    AddPublicFields(line, block);
    if (QV_DEVMODE::IsValidQV_DEVMODE(&block)) {
        constexpr int kFirstPrivateRow = 34;
        line.Text() += TQVDM(&block).ToString(TEXT(" "), kFirstPrivateRow);
    }
    return line.Text();
}

UnicodeString DOCUMENTPROPERTYHEADER_Str(DOCUMENTPROPERTYHEADER* h) {
    if (h == nullptr) return TEXT("NULL");
    return UnicodePrintf(
        TEXT("fMode=%s pdmIn=0x%08x pdmOut=0x%08x cbOut=%lu pszPrinterName=\"%s\" hPrinter=0x%08x "
             "cbSize=%hu Reserved=%hu "),
        DocPropModeStr(h->fMode), Low32(h->pdmIn), Low32(h->pdmOut), h->cbOut, h->pszPrinterName,
        Low32(h->hPrinter), h->cbSize, h->Reserved);
}

UnicodeString DrvConvertDevMode_fMode(ULONG mode) {
    return NameOf(kConvertModes, mode);
}

UnicodeString DrvDeviceCapabilities_DeviceCap(unsigned short cap) {
    return NameOf(kCapabilities, cap);
}

UnicodeString DrvDocumentEvent_iEsc(int escape) {
    return NameOf(kDocumentEvents, escape);
}

UnicodeString TextTypeSTROBJ(STROBJ* s) {
    if (s == nullptr) return TEXT("NULL");
    const RECTL& r = s->rclBkGround;
    return UnicodePrintf(
        TEXT(
            "cGlyphs=%lu flAccel=%lu ulCharInc=%lu rclBkGround={%d,%d,%d,%d} pgp=x%x pwszOrg=x%x "),
        s->cGlyphs, s->flAccel, s->ulCharInc, r.left, r.top, r.right, r.bottom, Low32(s->pgp),
        Low32(s->pwszOrg));
}

UnicodeString TextTypeSYSTEMTIME(SYSTEMTIME* t) {
    if (t == nullptr) return TEXT("NULL");
    return UnicodePrintf(TEXT("%hu-%hu-%hu %hu:%hu:%hu"), t->wYear, t->wMonth, t->wDay, t->wHour,
                         t->wMinute, t->wSecond);
}

namespace {

// Of a block that need not be aligned, too.
int DevModeBytes(const void* dm) {
    if (dm == nullptr) return 0;
    DEVMODEW sizes;
    std::memcpy(&sizes, dm, offsetof(DEVMODEW, dmFields));
    return sizes.dmSize + sizes.dmDriverExtra;
}

}  // namespace

UnicodeString TextTypeJOB_INFO_2(JOB_INFO_2W* j) {
    if (j == nullptr) return TEXT("NULL");
    const int dm_bytes = DevModeBytes(j->pDevMode);
    return UnicodePrintf(TEXT("JobId=%lu pPrinterName=\"%s\" pMachineName=\"%s\" pUserName=\"%s\" "
                              "pDocument=\"%s\" pNotifyName=\"%s\" "
                              "pDatatype=\"%s\" pPrintProcessor=\"%s\" pParameters=\"%s\" "
                              "pDriverName=\"%s\" pDevMode=%dbytes "
                              "pStatus=\"%s\" Status=%lu Priority=%lu Position=%lu StartTime=%lu "
                              "UntilTime=%lu TotalPages=%lu Size=%lu "
                              "Submitted=%s Time=%lu PagesPrinted=%lu "),
                         j->JobId, j->pPrinterName, j->pMachineName, j->pUserName, j->pDocument,
                         j->pNotifyName, j->pDatatype, j->pPrintProcessor, j->pParameters,
                         j->pDriverName, dm_bytes, j->pStatus, j->Status, j->Priority, j->Position,
                         j->StartTime, j->UntilTime, j->TotalPages, j->Size,
                         TextTypeSYSTEMTIME(&j->Submitted), j->Time, j->PagesPrinted);
}
