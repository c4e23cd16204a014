// The public printer settings block, DEVMODEW, and its constants.
#pragma once

#include "minwindef.h"

#define CCHDEVICENAME 32
#define CCHFORMNAME 32
#define DM_SPECVERSION 0x0401
#define DM_ORIENTATION 0x00000001
#define DM_PAPERSIZE 0x00000002
#define DM_PAPERLENGTH 0x00000004
#define DM_PAPERWIDTH 0x00000008
#define DM_SCALE 0x00000010
#define DM_NUP 0x00000040
#define DM_COPIES 0x00000100
#define DM_DEFAULTSOURCE 0x00000200
#define DM_PRINTQUALITY 0x00000400
#define DM_COLOR 0x00000800
#define DM_DUPLEX 0x00001000
#define DM_YRESOLUTION 0x00002000
#define DM_TTOPTION 0x00004000
#define DM_COLLATE 0x00008000
#define DM_FORMNAME 0x00010000
#define DM_ICMMETHOD 0x00800000
#define DM_ICMINTENT 0x01000000
#define DM_MEDIATYPE 0x02000000
#define DM_DITHERTYPE 0x04000000
#define DM_PANNINGWIDTH 0x08000000
#define DM_PANNINGHEIGHT 0x10000000
#define DMORIENT_PORTRAIT 1
#define DMORIENT_LANDSCAPE 2
#define DMPAPER_A4 9
#define DMBIN_AUTO 7
#define DMCOLOR_COLOR 2
#define DMDUP_SIMPLEX 1
#define DMTT_SUBDEV 3
#define DMCOLLATE_FALSE 0
#define DMNUP_ONEUP 2
#define DMICMMETHOD_NONE 1
#define DMICM_SATURATE 1
#define DMMEDIA_STANDARD 1
#define DMDITHER_NONE 1
#define DM_OUT_BUFFER 2
#define DM_COPY 2
#define DM_IN_PROMPT 4
#define DM_PROMPT 4
#define DM_IN_BUFFER 8
#define DM_MODIFY 8

struct DEVMODEW {
    WCHAR dmDeviceName[CCHDEVICENAME];
    WORD dmSpecVersion;
    WORD dmDriverVersion;
    WORD dmSize;
    WORD dmDriverExtra;
    DWORD dmFields;
    short dmOrientation;
    short dmPaperSize;
    short dmPaperLength;
    short dmPaperWidth;
    short dmScale;
    short dmCopies;
    short dmDefaultSource;
    short dmPrintQuality;
    short dmColor;
    short dmDuplex;
    short dmYResolution;
    short dmTTOption;
    short dmCollate;
    WCHAR dmFormName[CCHFORMNAME];
    WORD dmLogPixels;
    DWORD dmBitsPerPel;
    DWORD dmPelsWidth;
    DWORD dmPelsHeight;
    DWORD dmNup;
    DWORD dmDisplayFrequency;
    DWORD dmICMMethod;
    DWORD dmICMIntent;
    DWORD dmMediaType;
    DWORD dmDitherType;
    DWORD dmReserved1;
    DWORD dmReserved2;
    DWORD dmPanningWidth;
    DWORD dmPanningHeight;
};
using PDEVMODEW = DEVMODEW*;
using LPDEVMODEW = DEVMODEW*;
static_assert(sizeof(DEVMODEW) == 220);
