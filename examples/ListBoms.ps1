# Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
#   powershell -File ListBoms.ps1 "DESCRIPTOR"
# Not tried yet: it was written by the documentation of PowerShell, where no Windows was at hand. A 32-bit component wants
# the 32-bit PowerShell (SysWOW64).
param([Parameter(Mandatory = $true)][string] $descriptor)

$view = New-Object -ComObject 'QorvaneMBomBill.BomView'
$boms = $view.GetBomLdgInfo($descriptor)
$first = $null
foreach ($bom in $boms) {
  '{0} {1}' -f $bom.Value('FBOMNumber'), $bom.Value('FStatus')
  if ($null -eq $first) { $first = $bom.Value('FInterID') }
}

$update = New-Object -ComObject 'QorvaneMBomBill.BomUpdate'
$info = ''
'CheckBomUsed: {0}' -f $update.CheckBomUsed($descriptor, $first, [ref] $info)

try {
  $null = $view.GetBomLdgInfo($descriptor, 'no condition')
} catch {
  'Error: {0:X8}' -f $_.Exception.InnerException.HResult
}
