// A dylib with an import that nothing here stands for.
extern "C" {
int nobodyHasThis(void);
int callNobody(void) {
    return nobodyHasThis();
}
}
