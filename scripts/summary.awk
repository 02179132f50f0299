# Reads a report and prints smallest, mean and largest value of every column. Values that are no
# number, and the -1 between two periods of flickering, are left out.
BEGIN { FS = " *\t" }
FNR == 1 {
  columns = NF
  for (c = 2; c <= NF; ++c) { name[c] = $c; sub(/: *$/, "", name[c]) }
  next
}
{
  for (c = 2; c <= columns; ++c) {
    value = $c
    sub(/ *$/, "", value)
    if (value !~ /^-?[0-9.]+$/ || (c == columns && value + 0 == -1)) continue
    if (!(c in count) || value + 0 < low[c]) low[c] = value + 0
    if (!(c in count) || value + 0 > high[c]) high[c] = value + 0
    sum[c] += value
    ++count[c]
  }
}
END {
  printf "%-15s %12s %12s %12s\n", FNR - 1 " frames", "smallest", "mean", "largest"
  for (c = 2; c <= columns; ++c) {
    if (count[c]) {
      printf "%-15s %12.5f %12.5f %12.5f\n", name[c], low[c], sum[c] / count[c], high[c]
    } else {
      printf "%-15s %12s %12s %12s\n", name[c], "-", "-", "-"
    }
  }
}
