// The operation of a public class in whose name a piece of shared code reports: its trace lines, faults and failed type
// checks name the function that was called, not the one that they stand in.
#pragma once

struct Operation {
    const char* name;       // the short name, as in trace lines and faults
    const char* signature;  // as in failed type checks
};

// The operation in which it stands. For operations that check types; the others tell their name, __func__.
#define BGP_THIS_OPERATION (Operation{__func__, __PRETTY_FUNCTION__})
