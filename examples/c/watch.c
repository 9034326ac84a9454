// Tells of each change to the contacts, by whatever program, from a loop of our own around poll(). It ends
// with its input (Control-D).
//
//   cc -std=c11 watch.c -o watch $(pkg-config --cflags --libs roster)
//   ./watch
#include <roster/roster.h>

#include <poll.h>
#include <stdio.h>
#include <unistd.h>

static void printIds(const char* what, ZRArrayRef ids)
{
    for (ZRIndex i = 0; i < ZRArrayGetCount(ids); ++i)
        printf("%s %s\n", what, ZRStringGetUTF8(ZRArrayGetValueAtIndex(ids, i)));
}

// Called by ZRMainQueueDrain, so on our own thread. The records can be asked already.
static void changed(const char* name, ZRTypeRef object, ZRDictionaryRef userInfo, void* refcon)
{
    (void)name, (void)object, (void)refcon;
    ZRArrayRef inserted = ZRDictionaryGetValue(userInfo, kZRInsertedRecords);
    ZRArrayRef updated = ZRDictionaryGetValue(userInfo, kZRUpdatedRecords);
    ZRArrayRef deleted = ZRDictionaryGetValue(userInfo, kZRDeletedRecords);
    printIds("new", inserted);
    printIds("changed", updated);
    printIds("gone", deleted);
    if (!inserted && !updated && !deleted)
        printf("anything may have changed\n");
    fflush(stdout);
}

// Serves the roster until there is no more input.
static int serve(int queue)
{
    struct pollfd waiting[] = {{.fd = queue, .events = POLLIN}, {.fd = STDIN_FILENO, .events = POLLIN}};
    for (;;) {
        if (poll(waiting, 2, -1) < 0) {
            perror("watch: poll");
            return 1;
        }
        if (waiting[0].revents)
            ZRMainQueueDrain();
        char ignored[256];
        if (waiting[1].revents && read(STDIN_FILENO, ignored, sizeof ignored) <= 0)
            return 0;
    }
}

int main(void)
{
    int queue = ZRMainQueueGetFileDescriptor(); // before the roster: from now on we are who serves its queue
    ZRRosterRef roster = ZRGetSharedRoster();
    if (!roster) {
        fprintf(stderr, "watch: the contacts cannot be opened\n");
        return 3;
    }
    ZRObserver* observer = ZRObserverCreate(kZRDatabaseChangedExternallyNotification, roster, changed, NULL);
    printf("watching\n");
    fflush(stdout);
    int status = serve(queue);
    ZRObserverDestroy(observer);
    return status;
}
