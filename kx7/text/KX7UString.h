// kx7text - the UTF-16 string: the class, and the operators that are no members.
#ifndef KX7_TEXT_KX7USTRING_H
#define KX7_TEXT_KX7USTRING_H

#include "kx7/text/KX7UStringClass.h"
#include "kx7/text/KX7UStringOperators.h"

#endif
