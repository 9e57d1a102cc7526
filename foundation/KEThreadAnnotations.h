// SPDX-License-Identifier: MIT
//
// Clang's thread-safety attributes under our own names; no-ops for other compilers.
// `X()` operations exclude the mutex that `XNoLock()` operations require.
#ifndef KECPP_FOUNDATION_KETHREADANNOTATIONS_H
#define KECPP_FOUNDATION_KETHREADANNOTATIONS_H

#if defined(__clang__)
// Any attribute of the analysis.
#define KECPP_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define KECPP_THREAD_ATTRIBUTE(x)
#endif

// What is a mutex, what holds one for as long as it lives, what a mutex guards, and what a function
// asks, takes or gives back.
#define KECPP_CAPABILITY(name) KECPP_THREAD_ATTRIBUTE(capability(name))
#define KECPP_SCOPED_CAPABILITY KECPP_THREAD_ATTRIBUTE(scoped_lockable)
#define KECPP_GUARDED_BY(mutex) KECPP_THREAD_ATTRIBUTE(guarded_by(mutex))
#define KECPP_PT_GUARDED_BY(mutex) KECPP_THREAD_ATTRIBUTE(pt_guarded_by(mutex))
#define KECPP_REQUIRES(...) KECPP_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define KECPP_EXCLUDES(...) KECPP_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define KECPP_ACQUIRE(...) KECPP_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define KECPP_RELEASE(...) KECPP_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define KECPP_ASSERT_HELD(mutex) KECPP_THREAD_ATTRIBUTE(assert_capability(mutex))
#define KECPP_RETURN_CAPABILITY(mutex) KECPP_THREAD_ATTRIBUTE(lock_returned(mutex))
#define KECPP_NO_THREAD_SAFETY_ANALYSIS KECPP_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif
