// GLib's locks are system calls of its own, which ThreadSanitizer does not see, so that everything they guard would
// look unguarded. These stand before them, in the program, and tell it. So do those for its slices, which hand memory
// from thread to thread by pages.
#include <dlfcn.h>
#include <glib.h>

#include <cstdint>

extern "C" {

void __tsan_acquire(void* address);
void __tsan_release(void* address);

void g_mutex_lock(GMutex* mutex)
{
    static auto const real = reinterpret_cast<void (*)(GMutex*)>(dlsym(RTLD_NEXT, "g_mutex_lock"));
    real(mutex);
    __tsan_acquire(mutex);
}

gboolean g_mutex_trylock(GMutex* mutex)
{
    static auto const real = reinterpret_cast<gboolean (*)(GMutex*)>(dlsym(RTLD_NEXT, "g_mutex_trylock"));
    gboolean const taken = real(mutex);
    if (taken != FALSE) {
        __tsan_acquire(mutex);
    }
    return taken;
}

void g_mutex_unlock(GMutex* mutex)
{
    static auto const real = reinterpret_cast<void (*)(GMutex*)>(dlsym(RTLD_NEXT, "g_mutex_unlock"));
    __tsan_release(mutex);
    real(mutex);
}

void g_cond_wait(GCond* cond, GMutex* mutex)
{
    static auto const real = reinterpret_cast<void (*)(GCond*, GMutex*)>(dlsym(RTLD_NEXT, "g_cond_wait"));
    __tsan_release(mutex);
    real(cond, mutex);
    __tsan_acquire(mutex);
}

gboolean g_cond_wait_until(GCond* cond, GMutex* mutex, gint64 end)
{
    static auto const real =
        reinterpret_cast<gboolean (*)(GCond*, GMutex*, gint64)>(dlsym(RTLD_NEXT, "g_cond_wait_until"));
    __tsan_release(mutex);
    gboolean const woken = real(cond, mutex, end);
    __tsan_acquire(mutex);
    return woken;
}

static void* pageOf(void* memory)
{
    constexpr std::uintptr_t kPage = 4096;
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(memory) / kPage * kPage);
}

gpointer g_slice_alloc(gsize size)
{
    static auto const real = reinterpret_cast<gpointer (*)(gsize)>(dlsym(RTLD_NEXT, "g_slice_alloc"));
    gpointer const memory = real(size);
    __tsan_acquire(pageOf(memory));
    __tsan_release(pageOf(memory));
    return memory;
}

gpointer g_slice_alloc0(gsize size)
{
    static auto const real = reinterpret_cast<gpointer (*)(gsize)>(dlsym(RTLD_NEXT, "g_slice_alloc0"));
    gpointer const memory = real(size);
    __tsan_acquire(pageOf(memory));
    __tsan_release(pageOf(memory));
    return memory;
}

void g_slice_free1(gsize size, gpointer memory)
{
    static auto const real = reinterpret_cast<void (*)(gsize, gpointer)>(dlsym(RTLD_NEXT, "g_slice_free1"));
    __tsan_release(pageOf(memory));
    real(size, memory);
}
}
