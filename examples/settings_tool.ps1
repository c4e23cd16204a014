# A tool in PowerShell: lists all printers, sets the number of copies of one, shows what it was before.
#
#     settings_tool.ps1 -Printer 'Vantrel Fax' -Copies 2
param([Parameter(Mandatory)][string]$Printer, [Parameter(Mandatory)][int]$Copies)
$ErrorActionPreference = 'Stop'
Import-Module (Join-Path $PSScriptRoot '..\bindings\powershell\QvRtl.psm1')

$all = Invoke-QvRequest '<query><printer/></query>'
$all.SelectNodes('/response/printer/name') | ForEach-Object { $_.InnerText }
$previous = Set-QvField $Printer @{ dmCopies = $Copies }
if (-not $previous.Contains('dmCopies')) { throw "dmCopies cannot be $Copies" }
"dmCopies was $($previous['dmCopies'])"
"Mode is $((Get-QvSetting $Printer)['Mode'])"
