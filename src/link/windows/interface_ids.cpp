// The identifiers that are defined once, in the file made from p32ls.idl.
#include <p32ls_i.c> // NOLINT: it holds definitions
