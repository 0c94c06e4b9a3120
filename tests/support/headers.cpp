// A program that does nothing: it holds the headers that are compiled once for all tests.
int main() {}
