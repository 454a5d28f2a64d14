// A fake Java side for the fuzz targets: a virtual machine whose thread
// environment implements, over plain C++ objects, the JNI functions the
// library uses, and a Java dispatcher object that answers every call at once.
// Reports (addSubmap, addNodeSymbol, ...) are taken and dropped; questions
// get fixed answers; id lists are drawn in turn from a pool of ids. It aborts
// on what a virtual machine would not survive either: a reference used or
// deleted after it was deleted, an array read or written outside its bounds,
// an object passed where a value of another kind is expected. One thread.
#ifndef SKIFF_TESTS_FUZZ_FAKE_JAVA_H_
#define SKIFF_TESTS_FUZZ_FAKE_JAVA_H_

#include <jni.h>

#include <string>
#include <vector>

namespace fakejava {

// Loads the fake virtual machine into the library (JNI_OnLoad) and returns
// the fake Java dispatcher object (a global reference), for
// QxwEventDispatcher::Open. `ids` feeds the id lists; `names` the root
// objects' selection names. Once per process.
jobject Install(std::vector<jint> ids, std::vector<std::string> names);

// The local references made and not deleted since the last Return. The
// dispatcher thread stays in one native call for the whole session, so what
// it leaves behind is never freed.
size_t LiveLocals();

// The native call has returned to Java: its local references are freed.
void Return();

}  // namespace fakejava

#endif  // SKIFF_TESTS_FUZZ_FAKE_JAVA_H_
