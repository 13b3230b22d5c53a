// What a host's process leaves behind when the library ends it on a signal.
#pragma once

// The exit status for one of this system's signals: its number on the system that the library was
// built for.
int exitStatusOf(int signal);
