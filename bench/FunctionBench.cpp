/* A call and a move of the callable wrapper, compared with a plain function pointer and the
   standard library's move-only wrapper. */

#include <functional>

#include <benchmark/benchmark.h>

#include "Ratios.h"
#include "VespermoorEngine/Function.h"

namespace {

using VespermoorEngine::Function;

template <class Call>
void call(benchmark::State& state, Call&& call) {
    int value = 0;
    for (auto _ : state) {
        for (int i = 0; i != 1000; ++i) {
            value = call(value);
            benchmark::DoNotOptimize(value);
        }
    }
}

/* A listener in C style: a pointer to a function that takes a pointer to its state. */
int addStep(const void* const step, const int value) {
    return value + *static_cast<const int*>(step);
}

void callPointer(benchmark::State& state) {
    int (*pointer)(const void*, int) = addStep;
    int step = 1;
    benchmark::DoNotOptimize(pointer);
    benchmark::DoNotOptimize(step);
    call(state, [&](const int value) { return pointer(&step, value); });
}
BENCHMARK(callPointer);

void callFunction(benchmark::State& state) {
    int step = 1;
    benchmark::DoNotOptimize(step);
    Function<int(int)> function{Corrade::DefaultInit,
                                [step](const int value) { return value + step; }};
    benchmark::DoNotOptimize(function);
    call(state, function);
}
BENCHMARK(callFunction);

#ifdef __cpp_lib_move_only_function
template <class Wrapper>
void move(benchmark::State& state, Wrapper one) {
    const std::size_t before = VespermoorEngine::Bench::allocationCount();
    Wrapper other;
    for (auto _ : state) {
        for (int i = 0; i != 1000; ++i) {
            new (&other) Wrapper{std::move(one)};
            benchmark::DoNotOptimize(other);
            new (&one) Wrapper{std::move(other)};
            benchmark::DoNotOptimize(one);
        }
    }
    state.counters["allocations"] = VespermoorEngine::Bench::allocationCount() - before;
}

void moveFunction(benchmark::State& state) {
    int a = 0, b = 0, c = 0;
    move(state, Function<int(int)>{Corrade::DefaultInit,
                                   [&a, &b, &c](const int value) { return value + a + b + c; }});
}
BENCHMARK(moveFunction);

void moveStandard(benchmark::State& state) {
    int a = 0, b = 0, c = 0;
    move(state, std::move_only_function<int(int) const>{
                    [&a, &b, &c](const int value) { return value + a + b + c; }});
}
BENCHMARK(moveStandard);
#endif

} // namespace

int main(int argc, char** argv) {
    return VespermoorEngine::Bench::run(
        argc, argv,
        {{"`Function`, a call", "a plain function pointer", "callFunction", "callPointer", 1.1},
         {"`Function`, a move", "`std::move_only_function`", "moveFunction", "moveStandard"}});
}
