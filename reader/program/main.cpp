#include "program/Program.h"

int main(int argc, char** argv) {
    return reader::runProgram(argc, argv);
}
