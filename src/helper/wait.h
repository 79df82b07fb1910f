// Waiting for the launcher's end.
#pragma once

#include <windows.h>

namespace ca::helper {

// A launcher that hands over ends within a frame; a machine that is paging or a debugger may
// take longer. Milliseconds.
inline constexpr DWORD longestWait = 5 * 60 * 1000;

// True when the process with this number has ended, or had before; false when it still runs after
// `limit` milliseconds. Waits on the process itself. Another process may have got the number since:
// one that may not be opened is somebody else's, and one that began after this process can't be the
// launcher. The latter is waited for a few seconds all the same, since the system's clock may have
// been set back in between.
bool waitForEnd(DWORD processId, DWORD limit);

} // namespace ca::helper
