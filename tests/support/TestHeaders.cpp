// Carries the precompiled headers of all test programs; a program itself, so that it is compiled as they are.
int main() { return 0; }
