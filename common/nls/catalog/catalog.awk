# catalog.awk: reads the source of a message catalog, checks it, and writes the compiler's table of
# numbers and inserts.
#
#   awk -f catalog.awk vexo.msg
#
# Rows look like {2580, "sssss"},  // W: the number, a letter for the kind of each insert (s text,
# c character, d whole number), the severity. How many answers a question has follows as a comment,
# so that two catalogs fit when their rows are the same. What is wrong with a catalog is said on
# standard error, and the exit status is 1.

function complain(number, what) {
  print FILENAME ": message " number ": " what > "/dev/stderr"
  failed = 1
}

# Leaves the letters of the kinds of a text's inserts in `kinds`. The conversions are those of
# render.h.
function take(number, text,   at, conversion, letter, place, next_, most, kind) {
  kinds = ""
  next_ = most = 0
  while ((at = index(text, "%")) > 0) {
    text = substr(text, at + 1)
    if (substr(text, 1, 1) == "%") {
      text = substr(text, 2)
      continue
    }
    if (!match(text, /^([1-9][0-9]*\$)?[-0#]*[0-9]*(\.[0-9]*)?[hlzjt]*[sdiuxXc]/)) {
      complain(number, "not a conversion: %" text)
      return
    }
    conversion = substr(text, 1, RLENGTH)
    text = substr(text, RLENGTH + 1)
    letter = substr(conversion, length(conversion))
    if (letter !~ /[sc]/) letter = "d"
    place = index(conversion, "$") ? conversion + 0 : ++next_
    if (place > most) most = place
    if (place in kind && kind[place] != letter) complain(number, "insert " place " has two kinds")
    kind[place] = letter
  }
  for (place = 1; place <= most; ++place) {
    if (!(place in kind)) complain(number, "insert " place " is not used")
    kinds = kinds kind[place]
  }
}

/^\$set / { set = $2 }
/^[0-9]/ && set == 1 {
  number = $1
  text = substr($0, index($0, "\"") + 1)
  sub(/"$/, "", text)
  if (number <= last) complain(number, "does not stand in the order of the numbers")
  last = number
  order[++count] = number
  identifier[number] = substr(text, 1, 7)
  letter[number] = substr(text, 8, 1)
  if (identifier[number] != sprintf("QRB%04d", number) || letter[number] !~ /[EISWZ]/) {
    complain(number, "begins with " substr(text, 1, 8))
  }
  take(number, substr(text, 9))
  row[number] = "{" number ", \"" kinds "\"},  // " letter[number]
}
/^[0-9]/ && set == 2 { answers[$1] = length($2) - 2; asked[++questions] = $1 }

END {
  if (!failed) {
    for (i = 1; i <= count; ++i) print row[order[i]]
    for (i = 1; i <= questions; ++i) print "// " asked[i] ": " answers[asked[i]] " answers"
  }
  exit failed
}
