// libcocoa/foundation/FSRef.h - the path behind a file reference.
#ifndef GNUSTEP_FILE_REFERENCES_H
#define GNUSTEP_FILE_REFERENCES_H

#include "libcocoa/foundation/CFString.h"

// Valid for the life of the process; NULL for bytes that are no reference.
const char* file_reference_path(const FSRef*);

#endif
