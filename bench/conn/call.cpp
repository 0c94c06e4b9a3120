// What it costs to call a method by its name.
#include <benchmark/benchmark.h>

#include "bench/support/build_type.h"
#include "conn/class.h"
#include "conn/self.h"
#include "zmfbconn/connection.h"

namespace zmfb::bench {

namespace {

// Stores its argument.
constexpr const char* method = "setrddactive";

host::Instance& instance_of(const zmFBConn& connection) {
    return static_cast<host::Instance&>(*connection.value().object());
}

// An object that is attached to nothing; it exists once it is first called.
zmFBConn make_connection() {
    zmFBConn connection;
    connection.call(method);
    return connection;
}

void direct(benchmark::State& state) {
    const zmFBConn connection = make_connection();
    host::Instance& self = instance_of(connection);
    const host::Class& type = self.type();
    host::Routine routine = type.methods()[type.find_method(method)].routine;
    benchmark::DoNotOptimize(routine);
    for (auto _ : state) {
        const Value arguments[] = {Value("CUSTOMER")};
        benchmark::DoNotOptimize(routine(self, Args(arguments)));
    }
}
BENCHMARK(direct);

// As programs do it: the name arrives at run time.
void by_name(benchmark::State& state) {
    zmFBConn connection = make_connection();
    const char* name = method;
    for (auto _ : state) {
        benchmark::DoNotOptimize(name);
        benchmark::DoNotOptimize(connection.call(name, "CUSTOMER"));
    }
}
BENCHMARK(by_name);

// As methods call each other: the name is checked when the code is compiled.
void by_checked_name(benchmark::State& state) {
    const zmFBConn connection = make_connection();
    host::Instance& self = instance_of(connection);
    for (auto _ : state) {
        benchmark::DoNotOptimize(zmfb::call(self, "setrddactive", "CUSTOMER"));
    }
}
BENCHMARK(by_checked_name);

}  // namespace

}  // namespace zmfb::bench

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::string_view(argv[1]) == "--smoke";
    if (!zmfb::bench::fit_to_be_timed() && !smoke) return 2;
    if (smoke) --argc, ++argv;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
