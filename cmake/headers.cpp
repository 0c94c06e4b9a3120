// Nothing: it holds the headers that are compiled once for the library.
