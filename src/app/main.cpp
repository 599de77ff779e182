#include "AppBootstrap.h"

int main(int argc, char **argv) {
    return kextkeeperMain(argc, argv);
}
