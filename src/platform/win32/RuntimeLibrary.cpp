// What the compiler's runtime library leaves behind in a process when a module that contains it is
// unloaded, taken care of. Linked into the module alone, and with MinGW alone.
// - Locks, once and values of threads, with the names and types that the runtime library was built
//   with. The library that it would take them from keeps two handles and a slot of the storage for
//   each thread that has called in, for ever.
// - The memory that exceptions come from when there is no other.
#include <windows.h>

#include <pthread.h>

#include <atomic>

namespace __gnu_cxx {

// The runtime library's own, for tools that look for leaks; no header has it.
void __freeres();

}  // namespace __gnu_cxx

namespace {

constexpr DWORD kNoKey = FLS_OUT_OF_INDEXES;
constexpr int kBusy = EBUSY;

// A lock of the runtime library: the owner's thread number and how often it holds the lock. Locks
// that are set up statically hold one of three negative numbers at first, others nothing. They are
// held for some instructions, so waiting is a matter of stepping aside.
struct RuntimeLock {
    LONG owner;
    LONG depth;
};
static_assert(sizeof(RuntimeLock) <= sizeof(pthread_mutex_t));

constexpr auto kPlain = static_cast<LONG>(GENERIC_INITIALIZER);
constexpr auto kErrorChecking = static_cast<LONG>(GENERIC_ERRORCHECK_INITIALIZER);
constexpr auto kRecursive = static_cast<LONG>(GENERIC_RECURSIVE_INITIALIZER);

RuntimeLock& LockOf(pthread_mutex_t* mutex) {
    return *reinterpret_cast<RuntimeLock*>(mutex);
}

bool IsFree(LONG owner) {
    return owner == 0 || owner == kPlain || owner == kErrorChecking || owner == kRecursive;
}

void StepAside(int& tries) {
    if (++tries < 64) {
        SwitchToThread();
    } else {
        Sleep(1);
    }
}

bool Take(RuntimeLock& lock) {
    const auto self = static_cast<LONG>(GetCurrentThreadId());
    const LONG owner = InterlockedCompareExchange(&lock.owner, 0, 0);
    if (owner == self) {
        ++lock.depth;
        return true;
    }
    if (!IsFree(owner) || InterlockedCompareExchange(&lock.owner, self, owner) != owner) {
        return false;
    }
    lock.depth = 1;
    return true;
}

// The keys that were made. At the end of the module their values go with them, whatever thread they
// belong to, and so does the memory for exceptions: nothing of the module is called later.
class Keys {
public:
    ~Keys() {
        for (std::atomic<DWORD>& key : keys_) {
            if (const DWORD made = key.exchange(kNoKey); made != kNoKey) {
                FlsFree(made);
            }
        }
        __gnu_cxx::__freeres();
    }

    // False when there are too many.
    bool Add(DWORD key) {
        for (std::atomic<DWORD>& place : keys_) {
            DWORD expected = kNoKey;
            if (place.compare_exchange_strong(expected, key)) {
                return true;
            }
        }
        return false;
    }
    void Remove(DWORD key) {
        for (std::atomic<DWORD>& place : keys_) {
            DWORD expected = key;
            place.compare_exchange_strong(expected, kNoKey);
        }
    }

private:
    // The runtime library makes two.
    std::atomic<DWORD> keys_[8] = {kNoKey, kNoKey, kNoKey, kNoKey, kNoKey, kNoKey, kNoKey, kNoKey};
};

// Made before and gone behind everything else that is static.
__attribute__((init_priority(101))) Keys keys;

}  // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t*) {
    *mutex = 0;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t* mutex) {
    *mutex = 0;
    return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    for (int tries = 0; !Take(LockOf(mutex));) {
        StepAside(tries);
    }
    return 0;
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) {
    return Take(LockOf(mutex)) ? 0 : kBusy;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    RuntimeLock& lock = LockOf(mutex);
    if (--lock.depth == 0) {
        InterlockedExchange(&lock.owner, 0);
    }
    return 0;
}

// Those who wait look again at what they wait for, so there is nobody to be told.
int pthread_cond_init(pthread_cond_t*, const pthread_condattr_t*) {
    return 0;
}

int pthread_cond_destroy(pthread_cond_t*) {
    return 0;
}

int pthread_cond_signal(pthread_cond_t*) {
    return 0;
}

int pthread_cond_broadcast(pthread_cond_t*) {
    return 0;
}

int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* mutex) {
    pthread_mutex_unlock(mutex);
    Sleep(1);
    return pthread_mutex_lock(mutex);
}

int pthread_once(pthread_once_t* once, void (*function)()) {
    static_assert(sizeof(pthread_once_t) == sizeof(LONG));
    auto* const state = reinterpret_cast<LONG*>(once);
    for (int tries = 0;;) {
        switch (InterlockedCompareExchange(state, 1, 0)) {
            case 0:
                function();
                InterlockedExchange(state, 2);
                return 0;
            case 2:
                return 0;
            default:
                StepAside(tries);
        }
    }
}

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
    const DWORD made = FlsAlloc(reinterpret_cast<PFLS_CALLBACK_FUNCTION>(destructor));
    if (made == kNoKey) {
        return EAGAIN;
    }
    if (!keys.Add(made)) {
        FlsFree(made);
        return EAGAIN;
    }
    *key = made;
    return 0;
}

int pthread_key_delete(pthread_key_t key) {
    keys.Remove(key);
    return FlsFree(key) ? 0 : EINVAL;
}

void* pthread_getspecific(pthread_key_t key) {
    // Callers do not expect the last error to change.
    const DWORD error = GetLastError();
    void* const value = FlsGetValue(key);
    SetLastError(error);
    return value;
}

int pthread_setspecific(pthread_key_t key, const void* value) {
    return FlsSetValue(key, const_cast<void*>(value)) ? 0 : EINVAL;
}

}  // extern "C"
