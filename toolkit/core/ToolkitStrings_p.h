/// \file
/// The toolkit's own string table, registered by TarqToolkit::registerSelf. Internal.
#pragma once

#include "core/SToolkitClient.h"

/// Entry 0 is the header ("", ""), entries 1..77 the strings, then the null terminator.
extern PdStringEntry toolkitStringTable[];
