# Completion of bomcall for PowerShell: load it from your profile with ". PATH\bomcall.ps1". bomcall must be on the PATH.
# It has not been tried: there was no PowerShell where it was written.

$script:BomcallMethods = $null

function Get-BomcallMethod {
  # Asked for once a session.
  if ($null -eq $script:BomcallMethods) {
    $class = ''
    $script:BomcallMethods = @(bomcall --list 2>$null | ForEach-Object {
        if ($_ -match '^([A-Za-z]\w*)') { $class = $Matches[1] }
        elseif ($_ -match '^  (\w+)') { "$class.$($Matches[1])" }
      })
  }
  $script:BomcallMethods
}

Register-ArgumentCompleter -Native -CommandName bomcall, bomcall.exe -ScriptBlock {
  param($word, $commandAst, $cursor)
  $before = @($commandAst.CommandElements | Select-Object -Skip 1 | ForEach-Object { "$_" } |
      Where-Object { $_ -ne $word })
  $target = $before | Where-Object { $_ -match '^[A-Za-z]\w*\.\w+$' -or $_ -eq 'bom' } | Select-Object -Last 1
  $options = '--list', '--check', '--help', '--version', '--batch', '--keep-going', '--dsn', '--connection', '--lang', '--encoding',
    '--json', '--csv', '--vertical', '--columns', '--fail-if', '--trace', '--no-host'
  $offered = if ($before.Count -gt 0 -and $before[-1] -eq '--lang') { 'chs', 'cht', 'en' }
  elseif ($before.Count -gt 0 -and $before[-1] -eq '--encoding') { 'utf-8', 'gbk' }
  elseif ($before.Count -gt 0 -and $before[-1] -eq 'bom') { 'tree', 'where-used', 'diff', 'check', 'cost-lines' }
  elseif ($word -like '-*') { if ($target -eq 'bom') { $options + '--depth', '--qty', '--dot', '--html', '--top' } else { $options } }
  elseif (-not $target) { @('bom') + @(Get-BomcallMethod) }
  elseif ($target -ne 'bom') {
    bomcall --help $target 2>$null | ForEach-Object { if ($_ -match '^  \d+  ([^:]+):') { "$($Matches[1])=" } }
  }
  $offered | Where-Object { $_ -like "$word*" } |
    ForEach-Object { [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_) }
}
