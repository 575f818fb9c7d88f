# shellcheck shell=bash
# site.sh: makes a miniature site; read with `source site.sh`. The script that reads it sets where the
# stand-ins are: site_programs (directories separated by ":") and site_libraries.
: "${site_programs:?}" "${site_libraries:?}"

# Enters the site in $1: the stand-ins are found before anything else of the same name.
enter_site() {
  export SANDBOX_HOME=$1
  export PATH=$site_programs:$PATH
  export LD_LIBRARY_PATH=$site_libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
  export VEXO_OPTFILE=$1/vexo.opt
  unset VLTI_DIR VLTI_LOG VLTI_CONFIG NLS_LANG ORACLE_HOME ORACLE_PATH SQLPATH
  [[ -n ${TERM:-} && ${TERM:-} != dumb ]] || export TERM=ansi
}

# Makes a site in directory $1 and enters it: store, node, two catalogs, options; $2 objects, of which
# $3 are orphans. More arguments go to zylstore generate.
make_site() {
  local site=$1 objects=$2 orphans=$3
  shift 3
  enter_site "$site"
  zylstore init
  zylstore node ORANODE --password secret --save-password "$site/passwords"
  zylstore generate --objects "$objects" --orphans "$orphans" --seed 1 --catalogs prod,test "$@"
  cat >"$site/vlt.opt" <<END
* client options of the sandbox
STORE $site/store.db
NODE ORANODE
END
  cat >"$site/vexo.opt" <<END
* agent options of the sandbox
VLTI_ORC_CONFIG $site/vlt.opt
VLTI_LOG        $site
VEXO_NODE       ORANODE
VEXO_PSWDPATH   $site/passwords
VEXO_DATE_FMT   3
END
}

# What the shell of site $1 reads first. The user's own start-up file may put a real sqlplus or client
# library first on the paths; so that none is used, the site is entered again after that file.
shell_start() {
  # shellcheck disable=SC2016 # for the other shell
  echo '[[ ! -r ~/.bashrc ]] || source ~/.bashrc'
  declare -p site_programs site_libraries
  declare -f enter_site
  printf 'enter_site %q\n' "$1"
  # shellcheck disable=SC2016 # for the other shell
  echo 'PS1="(sandbox) $PS1"'
}

# Runs a shell in site $1 and returns its exit status. Without a terminal it reads commands from standard
# input.
site_shell() {
  echo "Node ORANODE; catalogs prod and test, user rman, password rman."
  echo "Try: vexosync query, vexosync syncdb -numcat=2, zylstore --help"
  bash --rcfile <(shell_start "$1")
}
