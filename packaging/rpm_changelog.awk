# rpm_changelog.awk: makes the changelog of an RPM package from packaging/changelog, whose entries are
#
#   vexosync (8.1.13.0-1) unstable; urgency=medium
#     * What changed, on one or
#       more lines.
#    -- name <mail>  Sat, 21 Nov 2026 08:30:00 +0000
/^vexosync \(/ { version = substr($2, 2, length($2) - 2); changes = "" }
/^  / {
  sub(/^  \* /, "- ")
  sub(/^ +/, "  ")
  gsub(/%/, "%%")  # a single one begins a macro
  changes = changes $0 "\n"
}
/^ -- / {
  who = substr($0, 5, index($0, ">") - 4)
  sub(/.*>  /, "")
  sub(/,/, "")
  printf "* %s %s %s %s %s - %s\n%s\n", $1, $3, $2, $4, who, version, changes
}
