// The exit status of a host that the library ends on a signal.
#pragma once

// `signal` is a number of this system. The result is that signal's number on the system that the
// library was built for.
int exitStatusOf(int signal);
