// The signature that code for macOS carries.
#pragma once

#include "tools/wickfield-bundle/check/MachO.h"

namespace wickfield_bundle {

// Of the bytes of a whole signature. Tells who signed from nobody; whether it holds is for a Mac to say. Reads its list
// of parts and the beginning of one.
MachOSlice::Signature signatureIn(const ByteSource& bytes);

}  // namespace wickfield_bundle
