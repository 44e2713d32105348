extern "C" __attribute__((visibility("default"))) int nothing();

int nothing() {
    return 0;
}
