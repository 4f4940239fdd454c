// Frames per second of the event map while it is panned, as a window paints them.
//
//     QT_QPA_PLATFORM=offscreen map_bench DATABASE [WIDTHxHEIGHT [RATIO]]
//
// Each frame is one movement of the mouse with the button pressed, the repaint that it causes and one turn of
// the event loop, in which the map draws ahead. A frame in which the map isn't whole yet counts as it is
// painted, and such frames are counted as well.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>

#include <orvane/plot.h>

using Clock = std::chrono::steady_clock;

static double milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

static void sendMouse(OvEventMap &map, QEvent::Type type, QPoint at)
{
    const bool moves = type == QEvent::MouseMove;
    QMouseEvent event(type, at, map.mapToGlobal(at), moves ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&map, &event);
}

struct Frames {
    std::vector<double> times; // ms
    int incomplete = 0;

    template <typename Change>
    void measure(OvEventMap &map, Change change)
    {
        const auto begin = Clock::now();
        change();
        map.repaint();
        incomplete += !map.isComplete();
        QApplication::processEvents();
        times.push_back(milliseconds(Clock::now() - begin));
    }

    void print(const char *name)
    {
        std::sort(times.begin(), times.end());
        const auto at = [&](double part) {
            return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
        };
        double sum = 0;
        for (const double time : times)
            sum += time;
        const double late = static_cast<double>(
            std::count_if(times.begin(), times.end(), [](double time) { return time > 1000.0 / 30; }));
        std::printf(
            "%-34s %6.1f frames/s on average; ms a frame: median %.1f, 95 %% %.1f, 99 %% %.1f, worst %.1f; "
            "%.1f %% later than 1/30 s; %.1f %% not whole\n",
            name, 1000 * static_cast<double>(times.size()) / sum, at(0.5), at(0.95), at(0.99), times.back(),
            100 * late / static_cast<double>(times.size()),
            100.0 * incomplete / static_cast<double>(times.size()));
    }
};

static void settle(OvEventMap &map)
{
    while (!map.isComplete())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// To and fro over the map, `step` pixels a frame.
static void pan(OvEventMap &map, const char *name, int step)
{
    Frames frames;
    const QPoint middle = map.rect().center();
    for (const QPoint direction :
         {QPoint(1, 0), QPoint(0, 1), QPoint(-1, 0), QPoint(-1, -1), QPoint(1, 1), QPoint(0, -1)}) {
        sendMouse(map, QEvent::MouseButtonPress, middle);
        for (int i = 1; i <= 60; ++i)
            frames.measure(map, [&] { sendMouse(map, QEvent::MouseMove, middle + direction * step * i); });
        sendMouse(map, QEvent::MouseButtonRelease, middle + direction * step * 60);
    }
    frames.print(name);
}

static void wheel(OvEventMap &map, QPointF at, int delta)
{
    QWheelEvent event(at, map.mapToGlobal(at.toPoint()), QPoint(), QPoint(0, delta), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&map, &event);
}

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: map_bench DATABASE [WIDTHxHEIGHT [RATIO]]\n");
        return 2;
    }
    int width = 1200, height = 900;
    if (argc > 2 && std::sscanf(argv[2], "%dx%d", &width, &height) != 2)
        return 2;
    if (argc > 3)
        qputenv("QT_SCALE_FACTOR", argv[3]);
    QApplication application(argc, argv);
    OvEventMap map(nullptr, true, true);
    map.configure("latr", "40");
    map.configure("lonr", "-100");
    map.resize(width, height);
    map.show();

    auto *view = new OvEventView;
    const auto begin = Clock::now();
    view->configure("dbname", argv[1]);
    map.attach(view);
    Frames reading;
    while (view->isReading())
        reading.measure(map, [] {});
    std::printf("read in %.0f ms\n", milliseconds(Clock::now() - begin));
    const auto read = Clock::now();
    settle(map);
    std::printf("placed and drawn in another %.0f ms\n%s\n", milliseconds(Clock::now() - read),
                map.statusText().toUtf8().constData());
    reading.print("repaints while reading");
    pan(map, "panning the whole map, 8 px", 8);
    pan(map, "panning the whole map, 32 px", 32);
    map.showAll();
    Frames zooming;
    for (int i = 0; i < 16; ++i)
        zooming.measure(map, [&] { wheel(map, map.rect().center(), i < 8 ? 120 : -120); });
    zooming.print("turning the wheel");
    for (int i = 0; i < 8; ++i)
        wheel(map, map.rect().center(), 120);
    settle(map);
    pan(map, "panning at six times, 32 px", 32);
    map.showAll();
    settle(map);
    QVector<qint64> all;
    for (qint64 record = 0; record < 1'000'000; record += 2)
        all.push_back(record);
    Frames selecting;
    selecting.measure(map, [&] { map.setSelectedRecords(all); });
    selecting.print("selecting half a million");
    settle(map);
    pan(map, "panning with them, 32 px", 32);
    return 0;
}
