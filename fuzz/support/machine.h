// A machine with a printer of the product, one of another driver and a monitor, for targets that
// call the whole library.
#pragma once

namespace fuzz {

// Brings the registry back to the machine's first state, whatever the last input did to it.
void ResetMachine();

}  // namespace fuzz
