#include "qv_rtl_main/runtime_version.h"

int QVRtlVersion() {
    return QV_RTL_VERSION;
}
