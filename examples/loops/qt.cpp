// The contacts in a program that lives in a Qt event loop: a QSocketNotifier makes the loop serve them. It
// ends with its input (Control-D).
//
//   c++ -std=c++17 -fPIC qt.cpp -o qt $(pkg-config --cflags --libs roster Qt5Core)
//   ./qt
#include <roster/roster.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <unistd.h>

namespace {

void changed(const char* /*name*/, ZRTypeRef roster, ZRDictionaryRef /*userInfo*/, void* /*refcon*/)
{
    ZRArrayRef people = ZRCopyArrayOfAllPeople(roster);
    QTextStream(stdout) << ZRArrayGetCount(people) << " people\n";
    ZRRelease(people);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QSocketNotifier queue(
        ZRMainQueueGetFileDescriptor(), QSocketNotifier::Read); // before the roster is opened
    QObject::connect(&queue, &QSocketNotifier::activated, [] { ZRMainQueueDrain(); });

    ZRRosterRef roster = ZRGetSharedRoster();
    if (!roster) {
        QTextStream(stderr) << "qt: the contacts cannot be opened\n";
        return 3;
    }
    ZRObserver* observer =
        ZRObserverCreate(kZRDatabaseChangedExternallyNotification, roster, changed, nullptr);
    changed(nullptr, roster, nullptr, nullptr);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&application] {
        char ignored[256];
        if (read(STDIN_FILENO, ignored, sizeof ignored) <= 0)
            application.quit();
    });
    const int status = application.exec();
    ZRObserverDestroy(observer);
    return status;
}
