// Tells the compiler which lock guards a member: clang's thread safety analysis then refuses code
// that touches the member without it. The macOS build enables the analysis, since its C++ library
// annotates its locks.
#pragma once

#ifdef __clang__
#define MIRROR_GUARDED_BY(lock) __attribute__((guarded_by(lock)))
#else
#define MIRROR_GUARDED_BY(lock)
#endif
