#pragma once

// The flag of a process that the adapters read, for systems without it.

/// It ignores the end of its children.
inline constexpr int P_NOCLDWAIT = 0x40000000;
