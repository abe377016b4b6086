# To be sourced. Needs `repository`, `width` (x86, x64), and Fail; `nodePath` is where else packages are looked for.
#
# Node [arguments]  Runs Node.js for Windows of this width, from the current directory, and prints what it says.
#
# It lies beside the profile file: the library looks for it at the program's place.
packages=$repository/build/deps/npm/node_modules
Node() {
    local folder=
    [ "$width" = x86 ] || folder=/$width
    [ -e "$packages/.package-lock.json" ] || Fail "Node.js for Windows is missing; scripts/setup fetches it"
    ln -sfn "$packages/node-win-$width/bin/node.exe" node.exe
    ln -sfn "$repository/build/bin$folder/Config" Config
    # Wine passes for a Windows that this Node.js is not made for; it works all the same, but for pipes as its output.
    NODE_SKIP_PLATFORM_CHECK=1 NODE_PATH=${nodePath:-} "$repository/scripts/wine" ./node.exe "$@" >output.txt 2>&1 </dev/null
    local status=$?
    cat output.txt
    return $status
}
