/* A sleep() that returns at once, preloaded before the C library's. */
unsigned sleep(unsigned seconds);

unsigned sleep(unsigned seconds) {
    (void)seconds;
    return 0;
}
