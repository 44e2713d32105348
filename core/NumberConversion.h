#pragma once

/// Numbers as text with the point as decimal separator, whatever the locale of the process or the
/// thread. Named after the C runtime's functions, whose part they play. Any thread may call them.
namespace locale_independent {

/// Reads the decimal number at the start of `text`: white space, a sign, digits with at most one
/// point among or beside them, an exponent after e or E. What cannot continue the number ends it,
/// so "1e+" is 1. No number there (nor "inf", "nan" or a null pointer) gives 0; a number too large
/// for a double gives HUGE_VAL with its sign, one too small a zero with its sign.
double atof(const char* text);

/// Writes `format` to `buffer`, which is the caller's, with a double for each "%f" or "%lf": six
/// decimals, never an exponent. "%%" is a percent sign; any other character after a percent sign
/// stands for itself. A number takes up to 317 characters. Returns the number of characters
/// written, the closing zero not counted.
int sprintf(char* buffer, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The same with an int for each "%d", and with at most 1024 characters, the closing zero
/// included; what does not fit is cut off.
int wsprintfA(char* buffer, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Writes `value` to `buffer`, which is the caller's, with that many significant digits, 1 to 17,
/// less the zeros at the end of the fraction; the point stays: "1.5", "100.", "1.e-005". Fixed
/// notation for 0.1 and above up to that many digits before the point, else an exponent. A number
/// takes up to 25 characters with its closing zero. Returns `buffer`.
char* _gcvt(double value, int digits, char* buffer);

} // namespace locale_independent
