/* Included in front of json-parser's source: it asks isdigit which bytes begin and make up a number, and the C library
   answers by the host's locale, where superscripts may be digits. Here the ten of JSON are. */
#ifndef TOOLBELT_JSON_ASCII_DIGITS_H
#define TOOLBELT_JSON_ASCII_DIGITS_H

#include <ctype.h>

static inline int isAsciiDigit(int c)
{
    return c >= '0' && c <= '9';
}

#undef isdigit
#define isdigit isAsciiDigit

#endif
