// Columns of numbers that may be longer than memory.
#ifndef LUMASCAN_COLUMN_H
#define LUMASCAN_COLUMN_H

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

// Pieces of a column, in a temporary file without a name that all columns of the process share. It
// is in the folder that TMPDIR names, or in /var/tmp, and is made for the first piece. Throws
// std::system_error when the file fails.
class Pieces {
 public:
  static constexpr size_t PIECE = 32768;  // bytes

  Pieces() = default;
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces();

  void write(size_t number, const void* piece);
  void read(size_t number, void* piece) const;  // one that was written
  void swap(Pieces* other) noexcept { places_.swap(other->places_); }

 private:
  std::vector<size_t> places_;  // in the file, by the pieces' numbers
};

// Makes a file for all columns that are filled from here on, which are the first ones: a process
// that confines itself cannot do it later. Should that fail, it is told when the file is needed.
void openPieceFile();

// What a vector does, in the memory of one piece: that in which a value was last read or written.
// Neighbours cost little, a jump costs reading a piece. Not for several threads at once.
template <typename T>
class Column {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  class const_iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = T;

    const_iterator(const Column* column, size_t row) : column_(column), row_(row) {}
    T operator*() const { return (*column_)[row_]; }
    const_iterator& operator++() {
      ++row_;
      return *this;
    }
    bool operator==(const const_iterator& other) const { return row_ == other.row_; }
    bool operator!=(const const_iterator& other) const { return row_ != other.row_; }

   private:
    const Column* column_;
    size_t row_;
  };
  using value_type = T;

  Column() = default;
  Column(std::initializer_list<T> values) { append(values); }
  Column(const std::vector<T>& values) { append(values); }
  Column(const Column& other) { append(other); }
  Column(Column&& other) noexcept { swap(&other); }
  Column& operator=(Column other) noexcept {
    swap(&other);
    return *this;
  }
  ~Column() = default;

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T operator[](size_t row) const { return pieceOf(row)[row % ROWS]; }
  T front() const { return (*this)[0]; }
  T back() const { return (*this)[size_ - 1]; }
  const_iterator begin() const { return {this, 0}; }
  const_iterator end() const { return {this, size_}; }

  void set(size_t row, T value) {
    pieceOf(row)[row % ROWS] = value;
    isChanged_ = true;
  }

  void push_back(T value) {
    set(size_, value);
    ++size_;
  }

  friend bool operator==(const Column& a, const Column& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
  }

 private:
  static constexpr size_t ROWS = Pieces::PIECE / sizeof(T);  // of a piece

  template <typename Values>
  void append(const Values& values) {
    for (const T value : values) push_back(value);
  }

  void swap(Column* other) noexcept {
    pieces_.swap(&other->pieces_);
    std::swap(piece_, other->piece_);
    std::swap(number_, other->number_);
    std::swap(isChanged_, other->isChanged_);
    std::swap(size_, other->size_);
  }

  T* pieceOf(size_t row) const {
    if (piece_ == nullptr || row / ROWS != number_) turnTo(row / ROWS);
    return piece_.get();
  }

  void turnTo(size_t number) const {
    if (piece_ == nullptr) piece_ = std::make_unique<T[]>(ROWS);
    if (isChanged_) pieces_.write(number_, piece_.get());
    isChanged_ = false;
    number_ = number;
    // Behind the last value there may be no such piece yet.
    if (number * ROWS < size_) pieces_.read(number, piece_.get());
  }

  // Reading turns to another piece as well.
  mutable Pieces pieces_;
  mutable std::unique_ptr<T[]> piece_;
  mutable size_t number_ = 0;  // of the piece
  mutable bool isChanged_ = false;
  size_t size_ = 0;
};

#endif
