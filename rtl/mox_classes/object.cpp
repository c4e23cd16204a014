#include "mox_classes/object.h"

namespace System {

TObject::~TObject() = default;

}  // namespace System
