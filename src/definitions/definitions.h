// Image records and whole-image operations: first those that the program runs on, then, from "plain
// forms" on, those kept beside them. The indicators are defined by the plain forms, and were once
// made of them; now each works on the bytes of the frame itself (src/indicators). The plain forms
// are part of the tests' composed indicators, and nothing that is shipped calls them: making them
// faster makes no frame faster. Their sources are in plain/.
//
// An image is one channel of w x h samples, row-major and without padding: sample (x, y) is
// data[y * w + x]. A record is a plain value: copying it shares the samples. Whoever called an
// allocating constructor calls the matching destructor once, on one of the copies.
//
// Every operation takes its inputs first and its outputs last. Outputs are made by the caller, who
// also zero-fills those that an operation adds onto. No operation keeps state, so different threads
// may run them at once on a shared input and on outputs of their own.
//
// A mismatch of sizes that an operation cannot survive is a programming error: it ends the process
// through assertion.h. All other requirements stated here are not tested.
//
// The widths of sums and counts are part of the results: "32-bit" means that the value wraps modulo
// 2^32, and it is meant to.
#ifndef LUMAPROBE_DEFINITIONS_H
#define LUMAPROBE_DEFINITIONS_H

#include <cstdint>

struct Image {
  uint64_t w;
  uint64_t h;
  uint8_t* data;
};

struct Image32 {
  uint64_t w;
  uint64_t h;
  int32_t* data;
};

struct ImageDouble {
  uint64_t w;
  uint64_t h;
  double* data;
};

// Edge of the coding block grid, in samples: the grid of blockiness, exposure, blackout and noise.
inline constexpr int32_t BLOCKSIZE = 8;

// ---- what the program runs on -------------------------------------------------------------------

// -- images: constructors, destructors

// make* wraps samples that the caller keeps; alloc* leaves the samples undefined; calloc* clears
// them. The allocator's answer is not tested: when memory is exhausted `data` is null.
Image makeImage(uint64_t w, uint64_t h, uint8_t* data);
Image allocImage(uint64_t w, uint64_t h);
Image callocImage(uint64_t w, uint64_t h);
void freeImage(Image* image);

Image32 makeImage32(uint64_t w, uint64_t h, int32_t* data);
Image32 allocImage32(uint64_t w, uint64_t h);
Image32 callocImage32(uint64_t w, uint64_t h);
void freeImage32(Image32* image);

ImageDouble makeImageDouble(uint64_t w, uint64_t h, double* data);
ImageDouble allocImageDouble(uint64_t w, uint64_t h);
ImageDouble callocImageDouble(uint64_t w, uint64_t h);
void freeImageDouble(ImageDouble* image);

// -- blocks: totals and deviations, one element per block

// Adds each block's sample total onto `dest`, one element per block, in 32 bits.
//
// src    at least dest->w * blockW columns and dest->h * blockH rows; the rest is not read.
// dest   zero-filled by the caller; left alone when it, or a block, is empty.
void blockSums(const Image* src, Image32* dest, uint64_t blockW, uint64_t blockH);

// Adds each block's total and total of squares onto `sums` and `squareSums` (both 32-bit,
// zero-filled by the caller) and writes its sample standard deviation (divisor N - 1) to `stdDevs`.
// `sums` gives the grid; the other two have its size.
//
// The square of a block's total is a 32-bit product too: for 16 x 16 blocks of mean above 181 it
// wraps and the deviation becomes large. Blur's values for bright blocks rest on it.
void calculateStdDevs(const Image* src, Image32* sums, Image32* squareSums, ImageDouble* stdDevs,
                      uint64_t blockW, uint64_t blockH);

// -- sums: of all samples

// Total (32-bit) and total of squares of the first w * h samples, w * h being a signed 32-bit
// product; both are 0 when that is not positive. The sum wraps beyond 8,421,504 samples of 255.
void sumAndSquareSum(const Image* image, int32_t* sum, int64_t* squareSum);

// ---- plain forms --------------------------------------------------------------------------------

// -- images: comparison, conversions, dumps

// 1 when both have the same width, height and samples, else 0.
int areEqual(const Image* a, const Image* b);

// Sample i of `src` to sample i of `dest`. The shapes may differ, the sample counts must agree
// (asserted). To 32 bits the value stays, to 8 bits its low byte stays: 256 gives 0, -1 gives 255.
void convU8toI32(const Image* src, Image32* dest);
void convI32toU8(const Image32* src, Image* dest);

// Dumps (y1 - y0 + 1) lines of (x1 - x0 + 1) samples to standard output. The rectangle gives only
// the shape of the dump: samples are taken from data[0] on, one after another.
void printRange(const Image* image, int32_t x0, int32_t x1, int32_t y0, int32_t y1);
void printRange32(const Image32* image, int32_t x0, int32_t x1, int32_t y0, int32_t y1);

// -- sums: totals, integral images and the block totals that they give

// Total of all samples; the 8-bit form is a 32-bit sum.
int64_t sumPixels32(const Image32* image);
uint32_t sumPixels(const Image* image);

// 32-bit total of the first a * b bytes (a 32-bit product; 0 when below 1 as a signed number).
uint32_t sumH(const uint8_t* data, uint32_t a, uint32_t b);

// 32-bit total of w x h bytes, column by column; 0 when a side is below 1.
uint32_t sumV(const uint8_t* data, int32_t w, int32_t h);

// 32-bit integral image whose first row is the plain source row: below it, element (x, y) is the
// total of columns 0..x over rows 1..y, plus sample (x, 0). `dest` has the size of `src`.
void integrate(const Image* src, Image32* dest);

// Copies src->w * src->h samples.
void onlyCopy(const Image* src, Image* dest);

// Block totals as 32-bit differences of the corners of an image made by `integrate`, one element of
// `dest` per block. Its unsummed first row is carried along, so they differ from blockSums.
// blockSumsInteg2 reads the corners from bytes.
void blockSumsInteg(const Image32* integral, Image32* dest, uint64_t blockW, uint64_t blockH);
void blockSumsInteg2(const Image* integral, Image32* dest, uint64_t blockW, uint64_t blockH);

// -- deviations: sample standard deviation of every block of doubles

// calculateStdDevs in double, leaving out of every block a margin of half the kernel's width on
// each side. Only the kernel's sides are read. For a kernel that is not square it prints a line and
// returns.
void calculateStdDevsDouble_ommitZeros(const ImageDouble* src, ImageDouble* sums,
                                       ImageDouble* squareSums, ImageDouble* stdDevs,
                                       const ImageDouble* kernel, uint64_t blockW, uint64_t blockH);

// -- gradients: finite differences, one output per direction

// Row 0 and column 0 of both outputs are 0. The outputs have the size of `src` (asserted) unless
// stated otherwise, and need not be cleared before.

// Backward differences: x is the sample minus its left neighbour, y minus its upper one.
void gradient(const Image* src, Image32* destX, Image32* destY);

// The same without sign.
void absGradient(const Image* src, Image32* destX, Image32* destY);

// Roberts cross: x is the upper left neighbour minus the sample, y the upper minus the left one.
void roberts(const Image* src, Image32* destX, Image32* destY);

// Roberts cross at every skipX-th column and skipY-th row: output (x, y) belongs to sample
// (x * skipX, y * skipY). destX gives the number of points, which the caller keeps inside `src`;
// destY has the same size.
void robertsSkip(const Image* src, Image32* destX, Image32* destY, int32_t skipX, uint32_t skipY);

// 3 x 3 Sobel operator; all border samples are 0. Returns the square root of the total of
// x^2 + y^2.
double sobel(const Image* src, Image32* destX, Image32* destY);

// The same, keeping the low byte of each result; the last row and column are left as they were.
void sobel2(const Image* src, Image* destX, Image* destY);

// -- arithmetic: sample by sample

// The first image gives the number of samples, cut to a signed 32-bit number; nothing is done when
// that is not positive. The others hold at least as many. The output may be one of the inputs.

void addSquares32(const Image32* a, const Image32* b, Image32* out);  // a^2 + b^2 in 32 bits
void multiply(const Image32* a, const Image32* b, Image32* out);      // a * b in 32 bits
void divideDouble(const ImageDouble* num, const ImageDouble* den, ImageDouble* out);
void divide(const Image32* num, const Image32* den, ImageDouble* out);  // divided as doubles

// a^2 + b^2 of all a->w * a->h bytes.
void addSquares(const Image* a, const Image* b, Image32* out);

// Square root of each sample; the sample counts must agree (asserted).
void imageSqrt(const ImageDouble* src, ImageDouble* dest);

// -- runs: stretches of strong samples, counted per block

// A sample is strong when it is greater than `threshold`. A run is a stretch of consecutive strong
// samples inside one block; it is counted once, when it reaches `minLen`. Each count adds 1 to the
// block's element of `dest`, which gives the grid and is zero-filled by the caller. Both return 0.

// Runs along rows.
int countSeqsH(const Image32* src, Image32* dest, uint64_t blockW, uint64_t blockH, uint32_t minLen,
               double threshold);

// Runs along columns. `counters` is work space of at least dest->w * blockW elements, zero on
// entry.
int countSeqsV(const Image32* src, Image32* dest, Image32* counters, uint64_t blockW,
               uint64_t blockH, uint32_t minLen, double threshold);

// Runs of at least minLen - 1 samples above `threshold` in the image taken as one sequence. A run
// is followed only as far as the sequence position src->w.
int32_t tempCountSeqsH(const Image32* src, int32_t, int32_t threshold, int32_t, int32_t,
                       int32_t minLen);

// -- filter: correlation of regions with a small kernel

// Filters nRegions regions of regionW x regionH samples that stand side by side, each by itself.
// Only samples at least half a kernel width from all edges of their region are written. Products
// are added row by row, column by column.
//
// Returns 0, or -1 after printing a line when the sizes of `src` and `dest` differ or the kernel is
// higher than `src`.
int32_t filter(const Image* src, ImageDouble* dest, const ImageDouble* kernel, uint32_t nRegions,
               uint32_t regionW, uint32_t regionH);

#endif
