# report.awk: the benchmarks' lines (harness.h) as tables. Input: rows.tsv, then the lines.
#
#   -v mode=rows     the goals, and whether they are reached
#   -v mode=growth   every cost at every size
#   -v mode=plot     the costs of one group for gnuplot (-v group=build_random), one line per size
#   -v markdown=1    a Markdown table; else columns
BEGIN { FS = "\t" }

FILENAME ~ /rows.tsv$/ {
  if ($0 ~ /^#/) next
  split($1, part, "@")
  key[++rows] = part[1]
  only[rows] = part[2]
  reach[rows] = $2
  stretch[rows] = $3
  what[rows] = $4
  next
}
$1 == "ratio" {
  ratio[$2, $3] = $4
  spread[$2, $3] = sprintf("%.2f to %.2f", $5, $6)
  if ($3 <= 1000000 && $3 + 0 > largest[$2] + 0) largest[$2] = $3
}
$1 == "cost" {
  if (!(($2, $3) in seen)) {
    seen[$2, $3]
    group_of[++series] = $2
    name[series] = $3
  }
  cost[$2, $3, $4] = $5
  if ($4 > 1 && !($4 in seen)) {  # sizes come in ascending order only within each part of a run
    seen[$4]
    sizes[++size_count] = $4 + 0
  }
}
END {
  sort_sizes()
  if (mode == "rows") print_rows()
  if (mode == "growth") print_growth()
  if (mode == "plot") print_plot()
}

# Prints cell[1] to cell[count].
function emit(count, first_width,    i, text) {
  text = markdown ? "|" : ""
  for (i = 1; i <= count; ++i) {
    if (markdown) text = text " " cell[i] " |"
    else text = text sprintf(i == 1 ? "%-" first_width "s" : "%15s", cell[i])
  }
  print text
}
function emit_header(titles, first_width,    count, text, i) {
  count = split(titles, cell, ";")
  emit(count, first_width)
  text = "|"
  for (i = 1; i <= count; ++i) text = text "---|"
  if (markdown) print text
}

function print_rows(    i, n) {
  emit_header("what;measured;spread;reach;stretch;met", 76)
  for (i = 1; i <= rows; ++i) {
    n = only[i] != "" ? only[i] : largest[key[i]]
    cell[1] = what[i] (n > 1 && only[i] == "" ? ", at " digits(n) : "")
    cell[2] = (key[i], n) in ratio ? sprintf("%.2f", ratio[key[i], n]) : "-"
    cell[3] = spread[key[i], n]
    cell[4] = reach[i]
    cell[5] = stretch[i]
    cell[6] = judged(ratio[key[i], n], reach[i], stretch[i])
    emit(6, 76)
  }
}
function judged(value, wanted, beyond) {
  if (value == "") return "not measured"
  if (wanted == "-") return "-"
  if (beyond != "-" && value + 0 <= beyond + 0) return "stretch"
  return value + 0 <= wanted + 0 ? "yes" : "no"
}

function print_growth(    i, j, titles) {
  titles = "cost;side;unit"
  for (j = 1; j <= size_count; ++j) titles = titles ";" digits(sizes[j])
  emit_header(titles, 20)
  for (i = 1; i <= series; ++i) {
    if (group_of[i] == "trace") continue  # has no size
    cell[1] = group_of[i]
    cell[2] = name[i]
    cell[3] = unit(group_of[i])
    for (j = 1; j <= size_count; ++j) cell[3 + j] = figure(cost[group_of[i], name[i], sizes[j]])
    emit(3 + size_count, 20)
  }
}

function print_plot(    i, j, text) {
  text = "N"
  for (j = 1; j <= series; ++j) if (group_of[j] == group) text = text "\t" name[j]
  print text
  for (i = 1; i <= size_count; ++i) {
    text = sizes[i]
    for (j = 1; j <= series; ++j) {
      if (group_of[j] != group) continue
      text = text "\t" (((group, name[j], sizes[i]) in cost) ? cost[group, name[j], sizes[i]] : "?")
    }
    if (text ~ /[0-9]\t.*[0-9]/) print text
  }
}

function unit(of) {
  if (of ~ /peak/) return "MB"
  if (of ~ /memory/) return "bytes"
  return of ~ /^(sync|delete)/ ? "s" : "ns"
}
function figure(value) {
  if (value == "") return ""
  if (value > 1e6) return sprintf("%.1f", value / 1e6)  # bytes of a whole run
  return sprintf(value >= 100 ? "%.0f" : value >= 10 ? "%.1f" : "%.3f", value)
}
# 1000000 as 1,000,000.
function digits(n,    text) {
  text = sprintf("%d", n)
  while (match(text, /[0-9][0-9][0-9][0-9](,|$)/)) {
    text = substr(text, 1, RSTART) "," substr(text, RSTART + 1)
  }
  return text
}
function sort_sizes(    i, j, kept) {
  for (i = 2; i <= size_count; ++i) {
    for (j = i; j > 1 && sizes[j] < sizes[j - 1]; --j) {
      kept = sizes[j]
      sizes[j] = sizes[j - 1]
      sizes[j - 1] = kept
    }
  }
}
