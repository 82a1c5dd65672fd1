// What the compiler's runtime takes for the life of a process, given back when the module is unloaded.
//
// A DLL that is linked statically has a runtime of its own, and that keeps, once it was used: the emergency
// memory for exceptions; a thread-local slot, locks, semaphores and memory of the thread library; and in each
// thread the module's thread-local variables. For a program this does not matter. A host that loads and
// unloads the DLL again and again would lose all of it each time, until no slot is left.
//
// cmake/UnloadableDll.cmake links copies of the thread library and of the thread-local variables' support in
// which the calls below stand in place of the system's. Nothing here may use what it replaces.
#include <windows.h>

#include <cstring>

extern "C" {
BOOL WINAPI DllMainCRTStartup(HINSTANCE module, DWORD reason, void* processEnds);
extern IMAGE_DOS_HEADER __ImageBase;        // NOLINT(bugprone-reserved-identifier): the linker's names
extern const IMAGE_TLS_DIRECTORY _tls_used; // NOLINT(bugprone-reserved-identifier)
}
namespace __gnu_cxx { // NOLINT(bugprone-reserved-identifier): the library's name
void __freeres();     // NOLINT(bugprone-reserved-identifier)
}

namespace {

// What has been taken and not given back.
enum class Kind { Slot, Handle, Section };
struct Taken {
  Taken* next;
  Kind kind;
  void* what;
};

SRWLOCK g_lock = SRWLOCK_INIT;
HANDLE g_heap = nullptr;
Taken* g_taken = nullptr;

class Locked {
 public:
  Locked() { AcquireSRWLockExclusive(&g_lock); }
  ~Locked() { ReleaseSRWLockExclusive(&g_lock); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
};

// The runtime's own heap: it goes as a whole. Null without memory.
HANDLE Heap() {
  const Locked locked;
  if (!g_heap) g_heap = HeapCreate(0, 0, 0);
  return g_heap;
}

// What cannot be remembered, without memory, stays as it would without this file.
void Note(Kind kind, void* what) {
  auto* taken = static_cast<Taken*>(HeapAlloc(Heap(), 0, sizeof(Taken)));
  if (!taken) return;
  const Locked locked;
  *taken = {g_taken, kind, what};
  g_taken = taken;
}

void Forget(Kind kind, const void* what) {
  Taken* found = nullptr;
  {
    const Locked locked;
    for (Taken** at = &g_taken; *at && !found; at = found ? at : &(*at)->next) {
      if ((*at)->kind != kind || (*at)->what != what) continue;
      found = *at;
      *at = found->next;
    }
  }
  if (found) HeapFree(g_heap, 0, found);
}

void GiveBack(const Taken& taken) {
  switch (taken.kind) {
  case Kind::Slot: TlsFree(static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(taken.what))); break;
  case Kind::Handle: CloseHandle(taken.what); break;
  case Kind::Section: DeleteCriticalSection(static_cast<CRITICAL_SECTION*>(taken.what)); break;
  }
}

// The thread that unloads the module ends for it: the system tells only of threads that really end.
void EndThisThread() {
  using Callbacks = PIMAGE_TLS_CALLBACK const*;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's structure holds the address as a number
  for (auto callback = reinterpret_cast<Callbacks>(_tls_used.AddressOfCallBacks); *callback; ++callback)
    (*callback)(&__ImageBase, DLL_THREAD_DETACH, nullptr);
}

void GiveAllBack() {
  EndThisThread();
  __gnu_cxx::__freeres();
  for (const Taken* taken = g_taken; taken; taken = taken->next) GiveBack(*taken);
  if (g_heap) HeapDestroy(g_heap);
}

} // namespace

// The DLL's entry point, around the compiler's own: that ends with the module's static objects and the tables
// for exceptions. Nothing of the module runs after this.
extern "C" BOOL WINAPI ModuleEntry(HINSTANCE module, DWORD reason, void* processEnds) {
  const BOOL done = DllMainCRTStartup(module, reason, processEnds);
  const bool unloads = reason == DLL_PROCESS_DETACH && !processEnds;
  const bool failedToLoad = reason == DLL_PROCESS_ATTACH && !done;
  if (unloads || failedToLoad) GiveAllBack();
  return done;
}

// ---- memory

extern "C" {

void* module_malloc(size_t size) {
  return HeapAlloc(Heap(), 0, size);
}

void* module_calloc(size_t count, size_t size) {
  if (size != 0 && count > static_cast<size_t>(-1) / size) return nullptr;
  return HeapAlloc(Heap(), HEAP_ZERO_MEMORY, count * size);
}

void* module_realloc(void* memory, size_t size) {
  return memory ? HeapReAlloc(Heap(), 0, memory, size) : module_malloc(size);
}

void module_free(void* memory) {
  if (memory) HeapFree(g_heap, 0, memory);
}

char* module_strdup(const char* text) {
  const size_t size = std::strlen(text) + 1;
  void* copy = module_malloc(size);
  return copy ? static_cast<char*>(std::memcpy(copy, text, size)) : nullptr;
}

} // extern "C"

// ---- what the system gives

namespace {

DWORD WINAPI AllocateSlot() {
  const DWORD slot = TlsAlloc();
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the number is kept where handles are
  if (slot != TLS_OUT_OF_INDEXES) Note(Kind::Slot, reinterpret_cast<void*>(static_cast<ULONG_PTR>(slot)));
  return slot;
}

HANDLE Noted(HANDLE handle) {
  if (handle) Note(Kind::Handle, handle);
  return handle;
}

HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL set, const char* name) {
  return Noted(CreateEventA(security, manual, set, name));
}

HANDLE WINAPI MakeSemaphore(SECURITY_ATTRIBUTES* security, LONG count, LONG most, const char* name) {
  return Noted(CreateSemaphoreA(security, count, most, name));
}

BOOL WINAPI Duplicate(HANDLE process, HANDLE handle, HANDLE toProcess, HANDLE* copy, DWORD access,
                      BOOL inherit, DWORD options) {
  const BOOL done = DuplicateHandle(process, handle, toProcess, copy, access, inherit, options);
  if (done && copy) Note(Kind::Handle, *copy);
  return done;
}

BOOL WINAPI Close(HANDLE handle) {
  Forget(Kind::Handle, handle);
  return CloseHandle(handle);
}

void WINAPI InitializeSection(CRITICAL_SECTION* section) {
  InitializeCriticalSection(section);
  Note(Kind::Section, section);
}

void WINAPI DeleteSection(CRITICAL_SECTION* section) {
  Forget(Kind::Section, section);
  DeleteCriticalSection(section);
}

} // namespace

// Imported functions are called through pointers of these names.
#define MODULE_IMPORT(name, function)                                                                        \
  extern decltype(&(function)) const module_##name __asm__("__imp_module_" #name);                           \
  decltype(&(function)) const module_##name = &(function)

MODULE_IMPORT(TlsAlloc, AllocateSlot);
MODULE_IMPORT(CreateEventA, MakeEvent);
MODULE_IMPORT(CreateSemaphoreA, MakeSemaphore);
MODULE_IMPORT(DuplicateHandle, Duplicate);
MODULE_IMPORT(CloseHandle, Close);
MODULE_IMPORT(InitializeCriticalSection, InitializeSection);
MODULE_IMPORT(DeleteCriticalSection, DeleteSection);
