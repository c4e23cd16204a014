// A wrapper's field by its name.
#pragma once

#include "driver_devmode/field_table.h"
#include "driver_devmode/field_text.h"
#include "driver_devmode/qvdm.h"
#include "qv_api.h"

namespace driver_devmode {

// One of the block or one of the wrapper's strings; without a row when no field is called so.
QV_API TField FindNamedField(TQVDM& wrapper, const TFieldName& name);

}  // namespace driver_devmode
