# A file in the place of a disc, in a drive whose tray has to be pushed in by hand: the first try to read back meets no
# disc. Profile, state and free sectors of the disc come from the test.
log=$IMAGES/log
disc=${IMAGES}sr2
if [[ "$*" == *-tell_media_space* ]]; then
    printf 'Media current: %s\nMedia status : %s\n' '%1' '%2' >&2
    printf 'Media blocks : 9 readable , 0 writable , 359849 overall\nMedia space  : %ss\n' '%3'
    exit
fi
[[ "$*" != *-blank* ]] || echo blank >>"$log"
[[ "$*" != *-eject* ]] || { echo eject >>"$log"; exit 0; }
if [[ "$*" == *-check_md5_r* ]]; then
    echo check >>"$log"
    [ "$(grep -c check "$log")" -gt 1 ] || { echo 'libburn : FAILURE : no medium' >&2; exit 5; }
fi
exec $REAL "${@/#$disc/stdio:$disc}"
