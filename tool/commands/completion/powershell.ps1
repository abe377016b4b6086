# PowerShell completion for gputunectl, made by: gputunectl completion powershell
Register-ArgumentCompleter -Native -CommandName 'gputunectl', 'gputunectl.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    # For each place the words that can stand there, and what they mean.
    $candidates = @{
{{candidates}}
    }
    $everywhere = @(
{{everywhere}}
    )
    # For each place and option the values; none when they are not known.
    $values = @{
{{values}}
    }
    # Where the words before the cursor lead: to a command, or to the value of an option.
    $place = ''
    $previous = ''
    $skip = $false
    foreach ($element in ($commandAst.CommandElements | Select-Object -Skip 1)) {
        if ($element.Extent.EndOffset -ge $cursorPosition) { break }
        $word = $element.ToString()
        $previous = $word
        if ($skip) {
            $skip = $false
            $previous = ''
            continue
        }
        $skip = $values.ContainsKey("$place $word") -or $values.ContainsKey(" $word")
        if ($candidates.ContainsKey("$place/$word")) { $place = "$place/$word" }
    }
    # Where no words are offered, PowerShell offers the names of files. Options are many: they are offered once a word
    # begins like one.
    if ($values.ContainsKey("$place $previous")) {
        $found = $values["$place $previous"] | ForEach-Object { , @($_, $_) }
    } elseif ($values.ContainsKey(" $previous")) {
        $found = $values[" $previous"] | ForEach-Object { , @($_, $_) }
    } else {
        $found = @($candidates[$place]) + $everywhere
    }
    $found | Where-Object {
        $_ -and $_[0] -like "$wordToComplete*" -and ($wordToComplete.StartsWith('-') -or -not $_[0].StartsWith('-'))
    } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_[0], $_[0], 'ParameterValue', $_[1])
    }
}
