#pragma once

namespace platform {

/// Makes the standard streams safe to use, whatever the program was started with: one that is
/// closed swallows what is written, rather than to lend its number to the next file that is
/// opened, and a reader that goes away is an error of the write, not the end of the program.
/// The first thing that a process does.
void prepareStandardStreams();

}  // namespace platform
