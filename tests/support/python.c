/* An interpreter of the architecture of this build: what the program python3 is, too. */
extern int Py_BytesMain(int count, char** words);

int main(int count, char** words) { return Py_BytesMain(count, words); }
