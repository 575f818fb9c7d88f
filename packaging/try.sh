#!/usr/bin/env bash
# try.sh: installs the packages of build/packages, uses them, removes them, and proves that only the
# user's own files are left; then does the same with the archives, and with the .rpm in a directory of
# their own. It changes the whole system: run it as root on a machine that is thrown away afterwards.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../build/packages"
if [[ ${1:-} != --throw-away-machine || $(id -u) != 0 ]]; then
  echo "Usage: packaging/try.sh --throw-away-machine" >&2
  echo "Run it as root. It installs and removes packages: use a machine that nobody needs afterwards." >&2
  exit 2
fi
export DEBIAN_FRONTEND=noninteractive
unset VEXO_OPTFILE VLTI_DIR VLTI_LOG VLTI_CONFIG
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

root='' # the directory that the programs take for the root of the file system, if it is another one
inside() { if [[ -n $root ]]; then chroot "$root" "$@"; else "$@"; fi; }

fail() {
  echo "try: $*" >&2
  exit 1
}

# Every file of the system, except those that change by themselves and those of the package manager.
# /opt is left out: the package manager removes it with the last package that has files in it.
files() {
  if [[ -n $root ]]; then
    find "$root" ! -path "$root/var*" -printf '/%P\n' | sort
    return
  fi
  find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp -o -path "$PWD" \
    -o -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache -o -path /var/log \) \
    -prune -o ! -path /opt -print | sort
}
installed() { dpkg-query -W -f '${Package}\n' | sort; }

# Expects the files of the system to be those of before, plus those listed in $1, one per line.
expect_left() {
  files >"$work/files.now"
  diff "$work/files.now" <(sort "$work/files.before" "$1") ||
    fail "the files on the system are not those expected (<: found, >: expected)"
}

# Installs the packages, and what they need that is missing.
install_packages() { apt-get install -y -qq --no-install-recommends ./*.deb >/dev/null; }

# $1 is remove or purge; what was installed with the packages is removed with them.
remove_packages() {
  local others
  apt-get "$1" -y -qq vexosync vexosync-sandbox >/dev/null
  others=$(comm -13 "$work/installed.before" <(installed) | grep -v '^vexosync' || true)
  # shellcheck disable=SC2086 # one word for each package
  [[ -z $others ]] || apt-get purge -y -qq $others >/dev/null
}

# Runs a command that must end with status $1; its output is in $work/screen.
ends_with() {
  local expected=$1 status=0
  shift
  "$@" >"$work/screen" 2>&1 || status=$?
  [[ $status == "$expected" ]] ||
    fail "$* ended with $status, not with $expected: $(tail -n 20 "$work/screen")"
}

# A user's first steps on a machine without a client library: the program logs that there is no
# options file; with one, it reports that there is no library. The stand-ins are not taken for real.
use_program() {
  ends_with 230 inside vexosync QUERY
  grep -q "$agent/vexo.opt" "$root$agent/vexoerror.log" || fail "the missing options file is not logged"
  echo "VEXO_NODE MINE" >"$root$agent/vexo.opt"
  ends_with 104 inside vexosync QUERY
  if inside sh -c 'command -v sqlplus'; then fail "the stand-in for sqlplus is on the path"; fi
  if inside ldconfig -p 2>/dev/null | grep libApiDS64; then fail "the linker finds the stand-in for the client library"; fi
}

# A whole SYNCDB without a terminal in a new site: the first of the orphans is picked and deleted.
use_sandbox() {
  local site=/tmp/vexo-try.$$
  rm -rf "$root$site"
  ends_with 0 inside vexosync-sandbox "$site" -- vexosync HELP
  grep -q SYNCDB "$work/screen" || fail "vexosync HELP shows no help"
  inside vexosync-sandbox "$site" -- zylstore list | sort >"$work/before"
  echo "VEXO_ENABLESCRIPTINPUT YES" >>"$root$site/vexo.opt"
  # 300, the code of a list that was left, is 44 in eight bits.
  printf '%s\n' "" +0 rman rman prod rman rman test 1 O y q |
    ends_with 44 inside vexosync-sandbox "$site" -- vexosync SYNCDB -NUMCATALOGS=2
  inside vexosync-sandbox "$site" -- zylstore list | sort >"$work/after"
  rm -rf "$root$site"
  comm -23 "$work/before" "$work/after" >"$work/gone"
  [[ $(wc -l <"$work/gone") == 1 ]] || fail "one object should be gone, found $(wc -l <"$work/gone")"
  echo "try: SYNCDB deleted $(cut -f 7 "$work/gone")"
}

# The sandbox's shell, with its commands from standard input, in a site that is removed with it.
use_shell() {
  # shellcheck disable=SC2016 # for the other shell
  echo 'echo "home $SANDBOX_HOME"; type -p sqlplus; exit 7' | ends_with 7 vexosync-sandbox
  grep -q '/vexosync-sandbox/bin/sqlplus$' "$work/screen" || fail "the shell does not find sqlplus"
  [[ ! -e $(sed -n 's/^home //p' "$work/screen") ]] || fail "the temporary site is left behind"
}

# man finds the pages, if there is a man command and the system is not configured to leave pages out.
use_manuals() {
  local path page
  command -v man >/dev/null || { echo "try: no man command, manual pages not looked for"; return 0; }
  for path in $(dpkg -L vexosync vexosync-sandbox | grep '/man/man[1-8]/'); do
    page=$(basename "$path" .gz)
    [[ -e $path ]] || { echo "try: $page is not installed on this system"; continue; }
    [[ $(man -w "${page##*.}" "${page%.*}") == "$path" ]] || fail "man does not find $page"
    echo "try: man finds $page"
  done
}

# What belongs to the user: the options file, the error log, and the directories that lead to them.
list_users_files() {
  local directory=$agent
  printf '%s\n' "$agent/vexo.opt" "$agent/vexoerror.log" >"$work/users"
  until [[ $directory == /opt ]] || grep -qxF "$directory" "$work/files.before"; do
    echo "$directory" >>"$work/users"
    directory=$(dirname "$directory")
  done
}

# Makes $root: the directories that every distribution has, and the programs and libraries that the
# packages need, copied from this system.
make_root() {
  local program library
  mkdir -p "$root"/{dev,opt,tmp,usr/{bin,lib,lib64,sbin}}
  mkdir -p "$root/usr/share"/{doc,bash-completion/completions,man/man1,man/man5}
  ln -s usr/{bin,lib,lib64,sbin} "$root"
  mknod -m 666 "$root/dev/null" c 1 3
  for program in bash sh env cat dirname ls mkdir mktemp readlink rm tput ldconfig; do
    program=$(type -P "$program")
    cp -L --parents "$program" "$root"
    ldd "$program" >"$work/libraries" 2>/dev/null || true
    # What the packages need is the same as for the packages that are installed here.
    ldd /usr/bin/{vexosync,zylstore} >>"$work/libraries"
    grep -oE '/[^ :]+\.so[^ ]*' "$work/libraries" | sort -u | while read -r library; do
      [[ -e $root$library ]] || cp -L --parents "$library" "$root"
    done
  done
}
rpm_here() { rpm --root "$root" --dbpath /var/lib/rpm "$@"; }

apt-get update -qq
files >"$work/files.before"
installed >"$work/installed.before"

install_packages
agent=$(dirname "$(readlink -f /usr/bin/vexosync)")
[[ ! -e $agent/vexo.opt ]] || fail "an options file is installed, which is the user's to write"
use_program
use_sandbox
use_shell
use_manuals
apt-get install -y -qq --reinstall ./*.deb >/dev/null
[[ $(cat "$agent/vexo.opt") == "VEXO_NODE MINE" ]] || fail "the user's options file is overwritten"
echo "try: the packages work"

list_users_files
remove_packages remove
expect_left "$work/users"
install_packages
remove_packages purge
expect_left "$work/users"
echo "try: removed; left are $(tr '\n' ' ' <"$work/users")"

rm "$agent/vexo.opt" "$agent/vexoerror.log"
install_packages
remove_packages remove
expect_left /dev/null
echo "try: removed without files of the user's; nothing is left"

# The archives hold the same files. The packages' dependencies are kept for them.
install_packages
root=$work/root
make_root
root=''
apt-get purge -y -qq vexosync vexosync-sandbox >/dev/null
files >"$work/files.before"
for archive in ./*.tar.gz; do tar -C / --no-overwrite-dir -xzf "$archive"; done
use_sandbox
for archive in ./*.tar.gz; do tar -tzf "$archive"; done | sed 's|^\.||; s|/$||' |
  grep -vxFf "$work/files.before" -e /opt | sort -u >"$work/unpacked"
expect_left "$work/unpacked"
while read -r file; do rm -d "$file"; done < <(tac "$work/unpacked")
expect_left /dev/null
echo "try: the archives work; $(wc -l <"$work/unpacked") files and directories, removed again"

# The .rpm. Nothing of the distribution is in their database, so that they depend on what is missing there.
root=$work/root
files >"$work/files.before"
rpm_here --initdb
rpm_here --force-debian -i --nodeps ./*.rpm
rpm_here -V --nodeps vexosync vexosync-sandbox || fail "the files of the .rpm are not installed as packed"
use_program
use_sandbox
rpm_here --force-debian -U --nodeps --replacepkgs ./*.rpm
[[ $(cat "$root$agent/vexo.opt") == "VEXO_NODE MINE" ]] || fail "the user's options file is overwritten"
list_users_files
rpm_here --force-debian -e --nodeps vexosync vexosync-sandbox
expect_left "$work/users"
echo "try: the .rpm work; left are $(tr '\n' ' ' <"$work/users")"
rm "$root$agent/vexo.opt" "$root$agent/vexoerror.log"
rpm_here --force-debian -i --nodeps ./*.rpm
rpm_here --force-debian -e --nodeps vexosync vexosync-sandbox
# The directories that were the user's are the package's own again.
expect_left /dev/null
echo "try: removed the .rpm without files of the user's; nothing is left"
