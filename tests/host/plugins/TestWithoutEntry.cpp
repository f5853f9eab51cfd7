// A library that can be loaded and isn't what its file name says.
extern "C" void SomeOtherModuleStart() {
}
