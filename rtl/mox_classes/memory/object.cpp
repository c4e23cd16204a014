#include "mox_classes/memory/object.h"

namespace System {

TObject::~TObject() = default;

}  // namespace System
