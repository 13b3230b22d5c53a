// A dylib with imports that are not available here; one of them is optional.
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
