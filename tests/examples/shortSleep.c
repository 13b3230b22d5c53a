/* Sleeps that end at once, put before the C library's. */
unsigned sleep(unsigned seconds);

unsigned sleep(unsigned seconds) {
    (void)seconds;
    return 0;
}
