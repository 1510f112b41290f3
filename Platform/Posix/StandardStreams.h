#pragma once

namespace platform {

/// Makes the standard streams safe to use, however the program was started. A stream that was
/// closed leads to the null device, so that no file that is opened later gets its number. Writing
/// to a pipe without a reader becomes an error, and no longer ends the program. To be called first
/// of all in a process.
void prepareStandardStreams();

}  // namespace platform
