// Loads the library that argv[1] names as a platform's process would, says so, and
// unloads it once standard input ends. Exit code 1 and the linker's words where it
// cannot be loaded.
#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    if (library == nullptr) {
        printf("%s\n", dlerror());
        return 1;
    }
    using Create = void* (*)();
    const auto create = reinterpret_cast<Create>(dlsym(library, "createImplInstance"));
    printf("loaded, entry object at %p\n", create());
    fflush(stdout);
    getchar();
    printf("unloaded: %d\n", dlclose(library));
    return 0;
}
