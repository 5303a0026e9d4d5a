// How much of the machine a hostile file may take.
#pragma once

namespace wickfield_media {

// For the rest of the process: 2 GiB of memory, ten seconds of a processor, 64 KiB in a file that it writes, no core
// left behind.
void limitProcess();

}  // namespace wickfield_media
