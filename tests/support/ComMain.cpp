// main() of the test programs that use COM: a single-threaded apartment, and UTF-8 output for GoogleTest's
// messages.
#include <gtest/gtest.h>
#include <objbase.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  SetConsoleOutputCP(CP_UTF8);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int result = RUN_ALL_TESTS();
  CoUninitialize();
  return result;
}
