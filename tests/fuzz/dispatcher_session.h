// The dispatcher's session for the fuzz targets that reach it: the emulator
// on a small map, the fake Java side (fake_java.h) as the Java dispatcher
// object, and the real event handlers registered, as connect leaves them but
// without the request server's socket.
#ifndef SKIFF_TESTS_FUZZ_DISPATCHER_SESSION_H_
#define SKIFF_TESTS_FUZZ_DISPATCHER_SESSION_H_

namespace fuzzsession {

// The map the session opens (a map of the Java tests with every kind of
// symbol and location).
constexpr const char* kMap = SKIFF_SOURCE_DIR "/java/test/resources/maps/search.json";

// Opens the session once per process; aborts when it cannot.
void Open();

// Loads the map afresh (its events delivered), as it was before anything
// changed it, and makes the platform serve its lists as usual again.
void Reload();

// Delivers every queued event to the handlers, as the event loop does;
// aborts when a handler left a local reference behind.
void DeliverEvents();

}  // namespace fuzzsession

#endif  // SKIFF_TESTS_FUZZ_DISPATCHER_SESSION_H_
