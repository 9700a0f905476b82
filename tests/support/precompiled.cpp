// The program that makes the precompiled header of all test programs. It is never run.

int main() {}
