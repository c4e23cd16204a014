#include "driver_devmode/value_tables.h"

#include <iterator>
#include <memory>

#include "mox_classes/memory/module_static.h"

namespace driver_devmode {

namespace {

// The kind in a table's first row.
constexpr int kEnumeration = 0;

constexpr TDefineConst kOrientations[] = {
    {kEnumeration, TEXT("DMORIENT_")}, {1, TEXT("PORTRAIT")}, {2, TEXT("LANDSCAPE")}};

constexpr TDefineConst kPrintQualities[] = {{kEnumeration, TEXT("DMRES_")},
                                            {-4, TEXT("HIGH")},
                                            {-3, TEXT("MEDIUM")},
                                            {-2, TEXT("LOW")},
                                            {-1, TEXT("DRAFT")}};

constexpr TDefineConst kDialogModes[] = {
    {kEnumeration, TEXT("QVDM_")}, {0, TEXT("INTERACTIVE")}, {1, TEXT("SILENT")}};

constexpr TDefineConst kDitherMethods[] = {{kEnumeration, TEXT("QVDM_")},
                                           {0, TEXT("MONOCHROME")},
                                           {1, TEXT("RH4")},
                                           {2, TEXT("PD256")},
                                           {3, TEXT("ED")}};

// 48 and 49 are reserved by the system and have no name.
constexpr TDefineConst kPaperSizes[] = {
    {kEnumeration, TEXT("DMPAPER_")},
    {1, TEXT("LETTER")},
    {2, TEXT("LETTERSMALL")},
    {3, TEXT("TABLOID")},
    {4, TEXT("LEDGER")},
    {5, TEXT("LEGAL")},
    {6, TEXT("STATEMENT")},
    {7, TEXT("EXECUTIVE")},
    {8, TEXT("A3")},
    {9, TEXT("A4")},
    {10, TEXT("A4SMALL")},
    {11, TEXT("A5")},
    {12, TEXT("B4")},
    {13, TEXT("B5")},
    {14, TEXT("FOLIO")},
    {15, TEXT("QUARTO")},
    {16, TEXT("10X14")},
    {17, TEXT("11X17")},
    {18, TEXT("NOTE")},
    {19, TEXT("ENV_9")},
    {20, TEXT("ENV_10")},
    {21, TEXT("ENV_11")},
    {22, TEXT("ENV_12")},
    {23, TEXT("ENV_14")},
    {24, TEXT("CSHEET")},
    {25, TEXT("DSHEET")},
    {26, TEXT("ESHEET")},
    {27, TEXT("ENV_DL")},
    {28, TEXT("ENV_C5")},
    {29, TEXT("ENV_C3")},
    {30, TEXT("ENV_C4")},
    {31, TEXT("ENV_C6")},
    {32, TEXT("ENV_C65")},
    {33, TEXT("ENV_B4")},
    {34, TEXT("ENV_B5")},
    {35, TEXT("ENV_B6")},
    {36, TEXT("ENV_ITALY")},
    {37, TEXT("ENV_MONARCH")},
    {38, TEXT("ENV_PERSONAL")},
    {39, TEXT("FANFOLD_US")},
    {40, TEXT("FANFOLD_STD_GERMAN")},
    {41, TEXT("FANFOLD_LGL_GERMAN")},
    {42, TEXT("ISO_B4")},
    {43, TEXT("JAPANESE_POSTCARD")},
    {44, TEXT("9X11")},
    {45, TEXT("10X11")},
    {46, TEXT("15X11")},
    {47, TEXT("ENV_INVITE")},
    {50, TEXT("LETTER_EXTRA")},
    {51, TEXT("LEGAL_EXTRA")},
    {52, TEXT("TABLOID_EXTRA")},
    {53, TEXT("A4_EXTRA")},
    {54, TEXT("LETTER_TRANSVERSE")},
    {55, TEXT("A4_TRANSVERSE")},
    {56, TEXT("LETTER_EXTRA_TRANSVERSE")},
    {57, TEXT("A_PLUS")},
    {58, TEXT("B_PLUS")},
    {59, TEXT("LETTER_PLUS")},
    {60, TEXT("A4_PLUS")},
    {61, TEXT("A5_TRANSVERSE")},
    {62, TEXT("B5_TRANSVERSE")},
    {63, TEXT("A3_EXTRA")},
    {64, TEXT("A5_EXTRA")},
    {65, TEXT("B5_EXTRA")},
    {66, TEXT("A2")},
    {67, TEXT("A3_TRANSVERSE")},
    {68, TEXT("A3_EXTRA_TRANSVERSE")},
};
static_assert(std::size(kPaperSizes) == 1 + 66);

struct TValueTables {
    TDefineTable orientations{kOrientations};
    TDefineTable print_qualities{kPrintQualities};
    TDefineTable dialog_modes{kDialogModes};
    TDefineTable dither_methods{kDitherMethods};
    TDefineTable paper_sizes{kPaperSizes};
};

}  // namespace

const TDefineInfo* ValuesOf(ValueTable table) {
    static const TValueTables& tables = System::KeepUntilUnload(std::make_unique<TValueTables>());
    switch (table) {
        case ValueTable::Orientation:
            return tables.orientations.Rows();
        case ValueTable::PrintQuality:
            return tables.print_qualities.Rows();
        case ValueTable::DialogMode:
            return tables.dialog_modes.Rows();
        case ValueTable::DitherMethod:
            return tables.dither_methods.Rows();
        case ValueTable::PaperSize:
            return tables.paper_sizes.Rows();
        case ValueTable::None:
            break;
    }
    return nullptr;
}

}  // namespace driver_devmode
