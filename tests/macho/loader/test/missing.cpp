// A dylib with imports that nothing here stands for, one of which it can do without.
extern "C" {
int nobodyHasThis(void);
int callNobody(void) {
    return nobodyHasThis();
}
int nobodyNeedsThis(void) __attribute__((weak));
int callIfThere(void) {
    return nobodyNeedsThis ? nobodyNeedsThis() : 0;
}
}
