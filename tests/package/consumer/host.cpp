#include <cstdio>
#include <dlfcn.h>

// Loads each library that it is given by path, as a host of plug-ins does.
int main(int count, char** paths) {
  for (int i = 1; i < count; ++i) {
    if (dlopen(paths[i], RTLD_NOW | RTLD_LOCAL) != nullptr) continue;
    std::printf("%s\n", dlerror());
    return 1;
  }
  return 0;
}
