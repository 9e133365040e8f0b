#include <cstdio>
int main() { std::puts("demo"); }
