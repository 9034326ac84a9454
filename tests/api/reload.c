// What a program is left with that opens the library, uses it and closes it again: `reload LIBRARY TIMES
// KILOBYTES` has no more descriptors and threads in the end than after the first time, and at most so much
// more memory. A step that fails says where.
#include <dirent.h>
#include <dlfcn.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#define CHECK(condition)                                                                                     \
    do                                                                                                       \
        if (!(condition)) {                                                                                  \
            fprintf(stderr, "reload.c:%d: %s\n", __LINE__, #condition);                                      \
            exit(1);                                                                                         \
        }                                                                                                    \
    while (0)

// ISO C has no cast from dlsym's answer to a function.
#define LOOK_UP(function, name) CHECK((*(void**)(&(function)) = dlsym(library, name)) != NULL)

typedef const void* Handle;

static void useOnce(const char* path)
{
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    CHECK(library);
    Handle (*sharedRoster)(void), (*createPerson)(void), (*copyPeople)(Handle), (*createText)(const char*);
    bool (*setValue)(Handle, const char*, Handle), (*save)(Handle), (*removeRecord)(Handle, Handle);
    int64_t (*count)(Handle);
    void (*release)(Handle);
    LOOK_UP(sharedRoster, "ZRGetSharedRoster");
    LOOK_UP(createPerson, "ZRPersonCreate");
    LOOK_UP(copyPeople, "ZRCopyArrayOfAllPeople");
    LOOK_UP(createText, "ZRStringCreateWithUTF8");
    LOOK_UP(setValue, "ZRRecordSetValue");
    LOOK_UP(save, "ZRSave");
    LOOK_UP(removeRecord, "ZRRemoveRecord");
    LOOK_UP(count, "ZRArrayGetCount");
    LOOK_UP(release, "ZRRelease");

    Handle roster = sharedRoster(), person = createPerson(), name = createText("Ada");
    CHECK(roster && setValue(person, "First", name) && save(roster));
    Handle people = copyPeople(roster);
    CHECK(count(people) > 0 && removeRecord(roster, person) && save(roster));
    release(people);
    release(name);
    release(person);
    CHECK(dlclose(library) == 0);
}

static long entriesOf(const char* folder)
{
    DIR* directory = opendir(folder);
    CHECK(directory);
    long entries = 0;
    while (readdir(directory))
        ++entries;
    closedir(directory);
    return entries;
}

static long residentKilobytes(void)
{
    long pages = 0;
    FILE* memory = fopen("/proc/self/statm", "r");
    CHECK(memory && fscanf(memory, "%*d %ld", &pages) == 1);
    fclose(memory);
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

typedef struct {
    long descriptors, threads, kilobytes;
} Resources;

static Resources measured(void)
{
    const Resources now = {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task"), residentKilobytes()};
    return now;
}

static void rest(long milliseconds)
{
    const struct timespec pause = {0, milliseconds * 1000000};
    nanosleep(&pause, NULL);
}

int main(int argc, char** argv)
{
    CHECK(argc == 4);
    useOnce(argv[1]);
    // Who stays for a while watches what others say.
    rest(100);
    const Resources first = measured();
    for (int left = atoi(argv[2]) - 1; left > 0; --left)
        useOnce(argv[1]);
    // A save may have left a thread that is about to end.
    Resources last = measured();
    for (int tries = 0;
         tries < 2000 && (last.descriptors > first.descriptors || last.threads > first.threads); ++tries) {
        rest(5);
        last = measured();
    }
    printf("descriptors %ld, then %ld; threads %ld, then %ld; kilobytes %ld, then %ld\n", first.descriptors,
        last.descriptors, first.threads, last.threads, first.kilobytes, last.kilobytes);
    CHECK(last.descriptors <= first.descriptors && last.threads <= first.threads);
    CHECK(last.kilobytes <= first.kilobytes + atol(argv[3]));
    return 0;
}
