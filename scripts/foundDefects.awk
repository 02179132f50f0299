# Reads the table of makeClip and the report of its clip, and prints for every defect the values of
# its own indicator: their range on the clean frames, and the value farthest from it while the defect
# lasts, with its frame.
BEGIN { FS = " *\t" }
FNR == 1 { ++file }
file == 1 && FNR > 1 {
  for (k = $2; k <= $3; ++k) isClean[k] = $1 == "clean"
  if ($1 != "clean") { ++defects; name[defects] = $1; first[defects] = $2; last[defects] = $3; indicator[defects] = $4 }
  frames = $3 + 1
}
file == 2 && FNR == 1 {
  split("blockiness spatialActivity letterbox pillarbox blockLoss blur temporalActivity blackout " \
        "freezing exposure contrast interlace noise slice flickering", order, " ")
  for (i in order) column[order[i]] = i + 1
}
file == 2 && FNR > 1 { for (c = 2; c <= NF; ++c) cell[FNR - 2, c] = $c + 0 }
END {
  printf "%-15s %-11s %-12s %-20s %-10s %s\n", "defect", "frames", "indicator", "on clean frames", "there", "found"
  for (d = 1; d <= defects; ++d) {
    c = column[indicator[d]]
    low = ""
    for (k = 0; k < frames; ++k) {
      v = cell[k, c]
      if (!isClean[k] || (indicator[d] == "flickering" && v == -1)) continue
      if (low == "") low = high = v
      if (v < low) low = v
      if (v > high) high = v
    }
    worst = first[d]
    distance = 0
    for (k = first[d]; k <= last[d]; ++k) {
      v = cell[k, c]
      if (indicator[d] == "flickering" && v == -1) continue
      away = v > high ? v - high : low - v
      if (away > distance) { distance = away; worst = k }
    }
    printf "%-15s %-11s %-12s %-20s %-10.5g %s\n", name[d], first[d] " - " last[d], indicator[d],
      sprintf("%.5g to %.5g", low, high), cell[worst, c], (distance > 0 ? "frame " worst : "NOT FOUND")
  }
}
