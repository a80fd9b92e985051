// A master by the publishing library: two axes that swing, a line in every millisecond.
//
//   cmake -S . -B build && cmake --build build
//   build/two_sines SECONDS
#include <master/publisher.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    using Clock = std::chrono::steady_clock;
    constexpr double kCycle = 0.001;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 60.0;

    wavo::master::PublisherOptions options;
    options.axis_names = {"X", "Y"};
    options.cycle_time = kCycle;
    options.announce_interval = std::chrono::milliseconds(10);
    wavo::master::PublisherEvents events;
    events.connected = [](const wavo::master::ViewerState& viewer) {
        std::printf("viewer %llu is there\n", static_cast<unsigned long long>(viewer.window));
    };
    std::string error;
    const auto publisher = wavo::master::MasterPublisher::Start(options, events, &error);
    if (!publisher) {
        std::fprintf(stderr, "two_sines: %s\n", error.c_str());
        return 1;
    }

    const auto begin = Clock::now();
    for (long long line = 0; static_cast<double>(line) * kCycle < seconds;) {
        // As many lines as are due: a program that was late makes up for it.
        const std::chrono::duration<double> passed = Clock::now() - begin;
        for (; static_cast<double>(line) * kCycle <= passed.count(); ++line) {
            const double angle = static_cast<double>(line) * kCycle * 2.0 * 3.14159265358979;
            publisher->Publish(std::array{50.0 * std::cos(angle), 50.0 * std::sin(angle)});
        }
        publisher->Serve(std::chrono::milliseconds(1));
    }
    const wavo::master::Counters total = publisher->Total();
    std::printf("%llu lines sent, %llu batches answered, %llu overruns\n",
                static_cast<unsigned long long>(total.lines_sent),
                static_cast<unsigned long long>(total.batches_answered),
                static_cast<unsigned long long>(total.overruns));
}
