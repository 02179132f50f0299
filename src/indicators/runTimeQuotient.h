// Division that the compiler cannot do in advance.
#ifndef LUMAPROBE_RUN_TIME_QUOTIENT_H
#define LUMAPROBE_RUN_TIME_QUOTIENT_H

// numerator / denominator as the processor divides. A compiler that sees 0 / 0 coming may put a NaN
// of its own in its place; that of the processor has its sign bit set on x86-64 and prints as -nan,
// and rows of different builds are compared byte by byte.
inline double runTimeQuotient(double numerator, double denominator) {
  const volatile double opaque = denominator;
  return numerator / opaque;
}

#endif
