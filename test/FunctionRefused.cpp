// Does not compile: REFUSED names a callable that a Function cannot hold.

#include "VespermoorEngine/Function.h"

struct TooLarge {
    void operator()() const {}
    char bytes[65];
};

struct alignas(64) TooStrict {
    void operator()() const {}
};

int main() {
    VespermoorEngine::Function<void()>{Corrade::DefaultInit, REFUSED{}}();
}
