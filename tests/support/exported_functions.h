// A call of each function that the library exports, as a caller makes it.
#pragma once

#include <ostream>
#include <vector>

#include "support/workbench.h"

namespace bgp_test {

// Whether a call asks for memory within the library. Without memory for the names of VRFs alone it goes on: that is told
// in the log.
enum class Memory { None, Needed, NeededButForNames };

struct ExportedFunction {
    const char* name;  // demangled
    Memory memory;
    void (*call)(Workbench&);
    void (*prepare)(Workbench&) = [](Workbench&) {};
};

inline void PrintTo(const ExportedFunction& function, std::ostream* out)
{
    *out << function.name;
}

extern const std::vector<ExportedFunction> kExportedFunctions;

}  // namespace bgp_test
