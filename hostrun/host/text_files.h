// hostrun/host/text_files.h - the host's "TextFile", and lines from standard input.
#pragma once

namespace hostrun {

void RegisterTextFileClass();

}  // namespace hostrun
