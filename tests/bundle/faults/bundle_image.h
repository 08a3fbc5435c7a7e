// tests/bundle/faults/bundle_image.h - the bundle as a host loads it, and its memory set back to an earlier
// state.
//
// The bundle keeps what it found for the life of the process. To repeat a call from the same start many
// thousand times, its writable memory is copied once and written back before each.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace faults {

using ImageState = std::vector<unsigned char>;

// Loads the bundle, of either format, with all of its symbols bound; or ends the process with a message.
void LoadBundle(const std::string& path);
void* EntryOfBundle();  // its REALPluginMain

// All of its memory that can change after loading.
ImageState SaveBundle();
void RestoreBundle(const ImageState& state);

}  // namespace faults
