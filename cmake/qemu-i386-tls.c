// Preloaded into 32-bit processes that run under qemu-i386 (./skiff does so
// for the 32-bit JVM), to keep each thread on its own thread-local storage.
//
// On i386 a thread reaches its TLS through %gs, whose descriptor glibc puts in
// one GDT entry. A kernel keeps that entry per thread; the emulator keeps one
// for the whole process, holding the base of whichever thread wrote it last.
// A thread keeps its own base while %gs is not reloaded, but the return from
// a signal handler reloads it, and the thread goes on with another thread's
// TLS (a JVM then crashes at its next safepoint, or on a broken pipe).
//
// So every signal handler installed through sigaction returns with %gs on an
// entry of the process's LDT that belongs to the thread alone. And since the
// emulator gives a new thread its maker's selector (reloaded after writing the
// new thread's base into the GDT entry), a thread is only made while its maker
// is back on the GDT entry, rewritten with the maker's own base, under a lock
// and with signals blocked.
//
// Handlers installed otherwise than through sigaction (glibc's signal() calls
// it internally) are not covered. Built with: gcc -m32 -shared -fPIC ... -ldl
#define _GNU_SOURCE
#include <asm/ldt.h>
#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

enum { kLdtEntries = 8192, kGdtTlsEntry = 6, kGdtTlsSelector = kGdtTlsEntry << 3 | 3 };

static int next_entry = 1;  // entry 0 is the first thread's
static __thread int own_selector;
static pthread_mutex_t creating = PTHREAD_MUTEX_INITIALIZER;

// The calling thread's TLS base: glibc keeps it at %gs:0.
static unsigned long OwnBase(void) {
  unsigned long base;
  __asm__ volatile("movl %%gs:0, %0" : "=r"(base));
  return base;
}

// A flat 4 GiB data segment at `base`, in entry `entry` of the GDT (when
// `gdt`) or the LDT. 0 on success.
static int WriteDescriptor(int gdt, int entry, unsigned long base) {
  struct user_desc d;
  memset(&d, 0, sizeof d);
  d.entry_number = (unsigned int)entry;
  d.base_addr = base;
  d.limit = 0xfffff;
  d.seg_32bit = 1;
  d.limit_in_pages = 1;
  d.useable = 1;
  return gdt ? (int)syscall(SYS_set_thread_area, &d)
             : (int)syscall(SYS_modify_ldt, 0x11, &d, sizeof d);
}

// The selector of the calling thread's own LDT entry, made on first use; 0
// once the table is full. Async-signal-safe.
static int OwnSelector(void) {
  if (own_selector == 0) {
    int entry = __atomic_fetch_add(&next_entry, 1, __ATOMIC_RELAXED);
    if (entry < kLdtEntries && WriteDescriptor(0, entry, OwnBase()) == 0) {
      own_selector = entry << 3 | 4 | 3;
    }
  }
  return own_selector;
}

// What each caller of sigaction installed, as it gave it.
static struct sigaction installed[_NSIG];

// The handler actually installed for every handler function: calls the
// caller's, then has the return from the signal load the thread's own entry.
static void ReturnOnOwnEntry(int sig, siginfo_t* info, void* context) {
  int selector = OwnSelector();
  const struct sigaction* a = &installed[sig];
  if (a->sa_flags & SA_SIGINFO) {
    a->sa_sigaction(sig, info, context);
  } else if (a->sa_handler != SIG_IGN && a->sa_handler != SIG_DFL) {
    a->sa_handler(sig);
  }
  if (selector != 0) ((ucontext_t*)context)->uc_mcontext.gregs[REG_GS] = selector;
}

// sigaction as the C library has it, but a handler function is installed
// wrapped (see ReturnOnOwnEntry); the caller reads back what it installed.
int sigaction(int sig, const struct sigaction* act, struct sigaction* oldact) {
  static int (*real)(int, const struct sigaction*, struct sigaction*);
  if (real == NULL) real = dlsym(RTLD_NEXT, "sigaction");
  if (sig <= 0 || sig >= _NSIG) return real(sig, act, oldact);
  struct sigaction previous;
  if (real(sig, NULL, &previous) != 0) return -1;
  struct sigaction given = previous.sa_sigaction == ReturnOnOwnEntry ? installed[sig] : previous;
  if (act != NULL) {
    struct sigaction wrapped = *act;
    if ((act->sa_flags & SA_SIGINFO) ||
        (act->sa_handler != SIG_IGN && act->sa_handler != SIG_DFL)) {
      wrapped.sa_sigaction = ReturnOnOwnEntry;
      wrapped.sa_flags |= SA_SIGINFO;
    }
    struct sigaction kept = installed[sig];
    installed[sig] = *act;
    if (real(sig, &wrapped, NULL) != 0) {
      installed[sig] = kept;
      return -1;
    }
  }
  if (oldact != NULL) *oldact = given;
  return 0;
}

struct Start {
  void* (*routine)(void*);
  void* arg;
  sigset_t mask;
};

// A new thread's start: the maker's signal mask, then the maker's routine.
static void* StartWithMask(void* p) {
  struct Start s = *(struct Start*)p;
  free(p);
  pthread_sigmask(SIG_SETMASK, &s.mask, NULL);
  return s.routine(s.arg);
}

// pthread_create as the C library has it, made with the maker on the GDT
// entry (see the top of the file).
int pthread_create(pthread_t* thread, const pthread_attr_t* attr, void* (*routine)(void*),
                   void* arg) {
  static int (*real)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  if (real == NULL) real = dlsym(RTLD_NEXT, "pthread_create");
  struct Start* start = malloc(sizeof *start);
  if (start == NULL) return EAGAIN;
  start->routine = routine;
  start->arg = arg;
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &start->mask);
  sigset_t makers = start->mask;
  pthread_mutex_lock(&creating);
  unsigned short current;
  __asm__ volatile("movw %%gs, %0" : "=r"(current));
  if (current & 4) {
    WriteDescriptor(1, kGdtTlsEntry, OwnBase());
    unsigned short gdt = kGdtTlsSelector;
    __asm__ volatile("movw %0, %%gs" : : "r"(gdt));
  }
  int error = real(thread, attr, StartWithMask, start);
  pthread_mutex_unlock(&creating);
  if (error != 0) free(start);
  pthread_sigmask(SIG_SETMASK, &makers, NULL);
  return error;
}

// The emulator gives a thread the LDT only if the table exists before the
// thread is made: make it, with the first thread's entry, before any other.
__attribute__((constructor)) static void MakeTheTable(void) {
  if (WriteDescriptor(0, 0, OwnBase()) == 0) own_selector = 0 << 3 | 4 | 3;
}
