# catalog.awk: reads the source of a message catalog, checks it, and writes what is made from it.
#
#   awk -v make=names -f catalog.awk vexo.msg      messages.h, the constants that calls use
#   awk -v make=rows -f catalog.awk vexo.msg       what two translations must have in common
#   awk -v make=document -f catalog.awk vexo.msg   docs/messages.md
#
# A row holds a message's number, a letter for the kind of each insert (s text, c character, d whole
# number), and the severity: "2580 sssss W". The number of answers to each question follows. Errors
# in the catalog are reported on standard error, and the exit status is 1.

function complain(number, what) {
  print FILENAME ": message " number ": " what > "/dev/stderr"
  failed = 1
}

# Returns the text with its conversions replaced by the names of their inserts, and leaves the
# letters of their kinds in `kinds`. The conversions are those of render.h.
function take(number, text, inserts,   result, at, conversion, letter, place, next_, most, kind, names) {
  split(inserts, names, "; ")
  result = kinds = ""
  next_ = most = 0
  while ((at = index(text, "%")) > 0) {
    result = result substr(text, 1, at - 1)
    text = substr(text, at + 1)
    if (substr(text, 1, 1) == "%") {
      result = result "%"
      text = substr(text, 2)
      continue
    }
    if (!match(text, /^([1-9][0-9]*\$)?[-0#]*[0-9]*(\.[0-9]*)?[hlzjt]*[sdiuxXc]/)) {
      complain(number, "not a conversion: %" text)
      return result
    }
    conversion = substr(text, 1, RLENGTH)
    text = substr(text, RLENGTH + 1)
    letter = substr(conversion, length(conversion))
    if (letter !~ /[sc]/) letter = "d"
    place = index(conversion, "$") ? conversion + 0 : ++next_
    if (place > most) most = place
    if (place in kind && kind[place] != letter) complain(number, "insert " place " has two kinds")
    kind[place] = letter
    result = result "<" names[place] ">"
  }
  for (place = 1; place <= most; ++place) {
    if (!(place in kind)) complain(number, "insert " place " is not used")
    kinds = kinds kind[place]
  }
  return result text
}

# Prints a paragraph in lines of up to 100 columns, each after `indent`. Leading blanks of a
# paragraph are kept.
function fold(text, indent,   word, words, line, lead, i) {
  match(text, /^ */)
  lead = substr(text, 1, RLENGTH)
  words = split(text, word, " ")
  line = indent lead word[1]
  for (i = 2; i <= words; ++i) {
    if (length(line " " word[i]) > 100) {
      print line
      line = indent lead word[i]
    } else {
      line = line " " word[i]
    }
  }
  print line
}

# Prints a message's text as it is shown. Lines that fit are left unchanged: their columns line up.
function showText(text,   lines, line, i) {
  sub(/^(\\n)+/, "", text)
  sub(/(\\n)+$/, "", text)
  gsub(/\\"/, "\"", text)
  lines = split(text, line, /\\n/)
  for (i = 1; i <= lines; ++i) {
    if (line[i] == "") print ""
    else if (length(line[i]) <= 96) print "    " line[i]
    else fold(line[i], "    ")
  }
}

function section(title, text) {
  if (text == "") return
  print ""
  fold("**" title ":** " text, "")
}

function introduce() {
  print "# Messages"
  print ""
  fold("Every message of `vexosync`: what it means, what the program does, and what you can do. To find a message in a pager, search for its identifier (`/QRB2643`).")
  print ""
  print "```"
  print "QRB2643E The listing in the spool file ... does not match its row count"
  print "|  |   |"
  print "|  |   severity: I information, W warning, E error, S severe error"
  print "|  the number"
  print "the program"
  print "```"
  print ""
  fold("After a warning the program continues; check what the warning names. After an error it refuses an answer or ends a step, usually the command. The exit status is then a code; the shell sees its low eight bits (\"code 2533 (229 in the shell)\"). A severe error means that memory ran out and the program cannot continue.")
  print ""
  fold("If the System action says that a message is logged, it is also a line of `vexoerror.log`, with the time and the process number. The log is in the directory of `VLTI_LOG`, else in the agent's directory, else in the current one. Texts of the storage client library appear there too; they have their own identifiers and are not listed here. The trace flag ORCLEVEL2 keeps temporary files that would otherwise be removed.")
  print ""
  fold("The program fills in words in angle brackets, such as `<file>`. The texts below are English; `VEXO_LANGUAGE` in the options file selects another catalog with the same numbers. `./dev messages` makes this page from the catalog `common/nls/catalog/vexo.msg`.")
}

function document(   i, number, z) {
  introduce()
  for (z = 0; z <= 1; ++z) {
    print "\n" (z ? "## Texts without an identifier" : "## Messages with an identifier")
    if (z) {
      print ""
      fold("Prompts, headings, help and screen lines. Some are parts of other messages.")
    }
    for (i = 1; i <= count; ++i) {
      number = order[i]
      if ((letter[number] == "Z") != z) continue
      print "\n### " (z ? number : identifier[number] letter[number]) "\n"
      showText(shown[number])
      section("Explanation", field[number, "Explanation"])
      section("System action", field[number, "System action"])
      section("User response", field[number, "User response"])
    }
  }
}

# The constants. A message without inserts is a nls::Message<>.
function constants(   i, number, list) {
  print "// messages.h: a constant for each message, made by the build from catalog/vexo.msg."
  print "#ifndef COMMON_NLS_MESSAGES_H\n#define COMMON_NLS_MESSAGES_H\n"
  print "#include \"common/nls/message.h\"\n\nnamespace msg {\n"
  for (i = 1; i <= count; ++i) {
    number = order[i]
    list = takes[number]
    gsub(/./, "\x27&\x27, ", list)
    sub(/, $/, "", list)
    print "inline constexpr nls::Message<" list "> k" field[number, "Name"] "{" number "};"
  }
  print "\n}  // namespace msg\n\n#endif  // COMMON_NLS_MESSAGES_H"
}

function checkName(number,   name) {
  name = field[number, "Name"]
  if (name !~ /^[A-Z][A-Za-z]+$/) complain(number, "has no Name, or none that can be a constant")
  if (name in owner) complain(number, "has the Name of message " owner[name])
  owner[name] = number
}

# Complains if a field that the document needs is missing.
function checkFields(number,   inserts, names) {
  if (field[number, "Explanation"] == "") complain(number, "has no Explanation")
  inserts = split(field[number, "Inserts"], names, "; ")
  if (inserts != length(kinds)) complain(number, "takes " length(kinds) " inserts, names " inserts)
  if (letter[number] == "Z") return
  if (field[number, "System action"] == "") complain(number, "has no System action")
  if (letter[number] != "I" && field[number, "User response"] == "") {
    complain(number, "has no User response")
  }
}

/^\$set / { set = $2 }
/^\$ (Name|Explanation|System action|User response|Inserts): / {
  name = substr($0, 3, index($0, ":") - 3)
  pending[name] = substr($0, index($0, ":") + 2)
  next
}
/^\$   / && name != "" {
  sub(/^\$ +/, "")
  pending[name] = pending[name] " " $0
  next
}
{ name = "" }
/^[0-9]/ && set == 1 {
  number = $1
  text = substr($0, index($0, "\"") + 1)
  sub(/"$/, "", text)
  if (number <= last) complain(number, "is out of numerical order")
  last = number
  order[++count] = number
  identifier[number] = substr(text, 1, 7)
  letter[number] = substr(text, 8, 1)
  if (identifier[number] != sprintf("QRB%04d", number) || letter[number] !~ /[EISWZ]/) {
    complain(number, "begins with " substr(text, 1, 8))
  }
  for (n in pending) field[number, n] = pending[n]
  split("", pending)
  shown[number] = take(number, substr(text, 9), field[number, "Inserts"])
  takes[number] = kinds
  if (make == "names") checkName(number)
  if (make == "document") checkFields(number)
}
/^[0-9]/ && set == 2 { answers[$1] = length($2) - 2; asked[++questions] = $1 }

END {
  if (!failed && make == "rows") {
    for (i = 1; i <= count; ++i) print order[i], takes[order[i]], letter[order[i]]
    for (i = 1; i <= questions; ++i) print asked[i], answers[asked[i]], "answers"
  }
  if (!failed && make == "names") constants()
  if (!failed && make == "document") document()
  exit failed
}
