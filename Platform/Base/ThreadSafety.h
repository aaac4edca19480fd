#pragma once

/// What a lock guards, told to the compiler: Clang's -Wthread-safety then refuses an access without the lock.
/// The standard library's locks aren't marked, so only locks of our own can serve. Nothing elsewhere.
#if defined(__clang__)
#define ZQ_THREAD_SAFETY(...) __attribute__((__VA_ARGS__))
#else
#define ZQ_THREAD_SAFETY(...)
#endif

/// A class that is a lock, and one that holds a lock while it lives.
#define ZQ_CAPABILITY(name) ZQ_THREAD_SAFETY(capability(name))
#define ZQ_SCOPED_CAPABILITY ZQ_THREAD_SAFETY(scoped_lockable)
/// A field that is touched under that lock only.
#define ZQ_GUARDED_BY(lock) ZQ_THREAD_SAFETY(guarded_by(lock))
/// A function that takes the lock (its own object without an argument), and one that gives it back.
#define ZQ_ACQUIRE(...) ZQ_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define ZQ_RELEASE(...) ZQ_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// The inside of a lock itself, where there is nothing to follow.
#define ZQ_NO_THREAD_SAFETY_ANALYSIS ZQ_THREAD_SAFETY(no_thread_safety_analysis)
