// The contacts in a program that lives in a GLib main loop (GTK and others): three lines make the loop serve
// them. It ends with its input (Control-D).
//
//   cc -std=c11 glib.c -o glib $(pkg-config --cflags --libs roster glib-2.0)
//   ./glib
#include <roster/roster.h>

#include <glib-unix.h>
#include <stdio.h>
#include <unistd.h>

static gboolean drain(gint descriptor, GIOCondition condition, gpointer data)
{
    (void)descriptor, (void)condition, (void)data;
    ZRMainQueueDrain();
    return G_SOURCE_CONTINUE;
}

static gboolean endOfInput(gint descriptor, GIOCondition condition, gpointer loop)
{
    (void)condition;
    char ignored[256];
    if (read(descriptor, ignored, sizeof ignored) > 0)
        return G_SOURCE_CONTINUE;
    g_main_loop_quit(loop);
    return G_SOURCE_REMOVE;
}

static void changed(const char* name, ZRTypeRef roster, ZRDictionaryRef userInfo, void* refcon)
{
    (void)name, (void)userInfo, (void)refcon;
    ZRArrayRef people = ZRCopyArrayOfAllPeople(roster);
    g_print("%" G_GINT64_FORMAT " people\n", (gint64)ZRArrayGetCount(people));
    fflush(stdout);
    ZRRelease(people);
}

int main(void)
{
    g_unix_fd_add(ZRMainQueueGetFileDescriptor(), G_IO_IN, drain, NULL); // before the roster is opened
    ZRRosterRef roster = ZRGetSharedRoster();
    if (!roster) {
        g_printerr("glib: the contacts cannot be opened\n");
        return 3;
    }
    ZRObserver* observer = ZRObserverCreate(kZRDatabaseChangedExternallyNotification, roster, changed, NULL);
    changed(NULL, roster, NULL, NULL);

    GMainLoop* loop = g_main_loop_new(NULL, FALSE);
    g_unix_fd_add(STDIN_FILENO, G_IO_IN | G_IO_HUP, endOfInput, loop);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    ZRObserverDestroy(observer);
    return 0;
}
