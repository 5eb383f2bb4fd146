// The same source as C++: its function gets another name.
#define list_token list_token_in_cpp
#include "tests/c/TokenLister.c"
