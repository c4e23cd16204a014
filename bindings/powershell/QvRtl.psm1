# The command interfaces of qv_rtl.dll for PowerShell, text commands and XML requests, and the shared
# log.
#
#     Import-Module .\QvRtl.psm1
#     Get-QvPrinter | ForEach-Object { Get-QvSetting $_ }
#     Write-QvLog 'the nightly job begins' -Source nightly_job
#     Watch-QvLog | Where-Object Level -eq Error
#
# All settings are those of the current user for a printer. The library must lie in a folder of
# $env:Path; set that before the first call. For Windows PowerShell 5.1 and PowerShell 7, 64-bit.
Set-StrictMode -Version 2.0

# Units of text that the first call of a command has room for.
$FirstLength = 4096

# Milliseconds between two looks at a log that is followed.
$Pause = 100

$Levels = @{ Error = 'X'; Warning = '*'; Information = 'i'; Trace = ' '; Log = '>' }

$Types = Add-Type -Namespace QvRtlModule -Name Native -PassThru -MemberDefinition @'
[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int DoCommandW(string command, [Out] char[] buffer, int length);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int DoXMLW(string requestFile, string responseFile);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int SetQVDefaultSetting(
    string printerName, byte dialogMode, byte runEnabled, byte useSerial, byte useDocumentName,
    string saveDirectory, string saveFileName, string program, string programParameters,
    string messageName, string messageWindowClass, string messageFormat);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int QVWriteLog(int level, string source, int line, string text);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int QVOpenLog(string file, int onlyNew, out IntPtr log);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern int QVReadLog(IntPtr log, out LogRecord record);

[DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
           CallingConvention = CallingConvention.Cdecl)]
public static extern void QVCloseLog(IntPtr log);

// QVLogRecord of log_record_c.h.
[StructLayout(LayoutKind.Sequential)]
public struct LogRecord
{
    public ulong time;
    public ulong missed;
    public IntPtr source;
    public IntPtr text;
    public IntPtr label;
    public IntPtr data;
    public int sourceLength;
    public int textLength;
    public int labelLength;
    public int dataSize;
    public int level;
    public int line;
    public uint processId;
    public uint threadId;
    public uint sessionId;
    public int madeAnew;
}
'@
$Native = $Types | Where-Object { $_.Name -eq 'Native' }
$LogRecord = $Types | Where-Object { $_.Name -eq 'LogRecord' }

function Test-QvText([string]$Text) {
    if ($Text.IndexOf([char]0) -ge 0) { throw 'The text holds a zero character' }
    $Text
}

# An item in the form that a command line needs: a tab ends an item.
function ConvertTo-QvItem([string]$Item) {
    $null = Test-QvText $Item
    $quote = [string][char]34
    if ($Item.IndexOf([char]9) -lt 0 -and -not $Item.StartsWith($quote)) { return $Item }
    $quote + $Item.Replace($quote, $quote + $quote) + $quote
}

# Makes a text command call of a word, keywords and values, and returns the answer. A failed command
# throws an exception with the status in Data['Status'].
function Invoke-QvCommand {
    [CmdletBinding()]
    param([Parameter(Mandatory)][AllowEmptyString()][string[]]$Items)
    $line = ($Items | ForEach-Object { ConvertTo-QvItem $_ }) -join [char]9
    $length = $FirstLength
    while ($true) {
        $buffer = New-Object char[] ($length + 1)
        $status = $Native::DoCommandW($line, $buffer, $length)
        $text = New-Object string ($buffer, 0, [Array]::IndexOf($buffer, [char]0))
        # A status does not tell the length of its message. A full buffer may hold a cut one.
        if ($status -lt 0 -and $text.Length -lt $length) {
            $failure = New-Object InvalidOperationException $text
            $failure.Data['Status'] = $status
            throw $failure
        }
        if ($status -ge 0 -and $status -le $length) { return $text }
        $length = [Math]::Max($status, $length * 2)
    }
}

# The names of all printers of the product.
function Get-QvPrinter {
    $answer = Invoke-QvCommand 'getorloprinters'
    if ($answer.Length -gt 0) { $answer.Split([char]9) }
}

# The printer's main settings as a hash table, by the names of the getdevmode command.
function Get-QvSetting {
    param([Parameter(Mandatory)][string]$Printer)
    $parts = (Invoke-QvCommand 'getdevmode', 'printername', $Printer).Split([char]9)
    if ($parts.Length % 2 -ne 0) { throw 'A setting holds a tab' }
    $settings = [ordered]@{}
    for ($i = 0; $i -lt $parts.Length; $i += 2) { $settings[$parts[$i]] = $parts[$i + 1] }
    $settings
}

# Changes main settings, by the keywords of the setdevmode command, all or none. Returns the lines
# that name unknown keywords.
function Set-QvSetting {
    param([Parameter(Mandatory)][string]$Printer,
          [Parameter(Mandatory)][System.Collections.IDictionary]$Values)
    $items = @('setdevmode', 'printername', $Printer)
    foreach ($key in $Values.Keys) { $items += @([string]$key, [string]$Values[$key]) }
    Invoke-QvCommand $items
}

# Sets the complete default behaviour of a printer. Returns whether that was possible.
function Set-QvDefault {
    param([Parameter(Mandatory)][string]$Printer, [switch]$Silent, [switch]$Run,
          [switch]$UseSerial, [switch]$UseDocumentName, [string]$Directory = '',
          [string]$FileName = '', [string]$Program = '', [string]$Parameters = '',
          [string]$Message = '', [string]$WindowClass = '', [string]$MessageFormat = '')
    $texts = $Directory, $FileName, $Program, $Parameters, $Message, $WindowClass, $MessageFormat
    $texts | ForEach-Object { $null = Test-QvText $_ }
    $set = $Native::SetQVDefaultSetting(
        (Test-QvText $Printer), [byte][bool]$Silent, [byte][bool]$Run, [byte][bool]$UseSerial,
        [byte][bool]$UseDocumentName, $Directory, $FileName, $Program, $Parameters, $Message,
        $WindowClass, $MessageFormat)
    $set -eq 1
}

# Carries out a request, and returns the response as an XML document. A response with errors throws an
# exception with the system's code in Data['Code'] and the response in Data['Response'].
function Invoke-QvRequest {
    param([Parameter(Mandatory)][string]$Request)
    $folder = Join-Path ([IO.Path]::GetTempPath()) ([IO.Path]::GetRandomFileName())
    $null = [IO.Directory]::CreateDirectory($folder)
    try {
        $requestFile = Join-Path $folder 'request.xml'
        $responseFile = Join-Path $folder 'response.xml'
        [IO.File]::WriteAllText($requestFile, $Request, (New-Object Text.UTF8Encoding $true))
        $null = $Native::DoXMLW($requestFile, $responseFile)
        if (-not [IO.File]::Exists($responseFile)) { throw 'There is no response' }
        $response = New-Object Xml.XmlDocument
        $response.Load($responseFile)
    } finally {
        [IO.Directory]::Delete($folder, $true)
    }
    $errors = $response.SelectNodes('/response/message/error')
    if ($errors.Count -gt 0) {
        $lines = $errors | ForEach-Object { $_.InnerText + ' ' + $_.GetAttribute('W32Msg') }
        $failure = New-Object InvalidOperationException ($lines -join "`n")
        $failure.Data['Code'] = $errors[0].GetAttribute('W32Code')
        $failure.Data['Response'] = $response
        throw $failure
    }
    $response
}

# Changes fields by name, such as dmCopies or exOut.UseSerial. Returns the previous values as a hash
# table. A field without a previous value was skipped: it is unknown, or the value does not fit.
function Set-QvField {
    param([Parameter(Mandatory)][string]$Printer,
          [Parameter(Mandatory)][System.Collections.IDictionary]$Values)
    $document = New-Object Xml.XmlDocument
    $target = $document.AppendChild($document.CreateElement('update'))
    $target = $target.AppendChild($document.CreateElement('printer'))
    $target.AppendChild($document.CreateElement('name')).InnerText = $Printer
    $devmode = $target.AppendChild($document.CreateElement('devmode'))
    foreach ($name in $Values.Keys) {
        $node = $devmode
        foreach ($part in $name.Split('.')) {
            $child = $node.SelectSingleNode($part)
            if ($null -eq $child) { $child = $node.AppendChild($document.CreateElement($part)) }
            $node = $child
        }
        $node.InnerText = [string]$Values[$name]
    }
    $answer = Invoke-QvRequest $document.OuterXml
    $previous = [ordered]@{}
    foreach ($name in $Values.Keys) {
        $field = $answer.SelectSingleNode('/response/printer/devmode/' + $name.Replace('.', '/'))
        if ($null -ne $field) { $previous[$name] = $field.InnerText }
    }
    $previous
}

# Writes lines into the log in force. A text of more than 32,000 characters is cut; the text says so at
# its end. A failure throws an exception with the system's code in Data['Status'].
function Write-QvLog {
    [CmdletBinding()]
    param([Parameter(Mandatory, ValueFromPipeline)][AllowEmptyString()][string]$Text,
          [ValidateSet('Error', 'Warning', 'Information', 'Trace')][string]$Level = 'Information',
          [string]$Source = 'powershell', [int]$Line = 0)
    process {
        $status = $Native::QVWriteLog([char]$Levels[$Level], (Test-QvText $Source), $Line,
                                      (Test-QvText $Text))
        if ($status -ne 0) { throw (New-QvLogFailure 'written' $status) }
    }
}

# The records of the log in force, or of a file, each once: new records, and with -All also those that
# the log holds. Ends when it is stopped, or when no record has come for -Timeout seconds. Missed counts
# the records before this one that were overwritten before they could be read. MadeAnew says that the
# log was deleted or replaced before this record.
function Watch-QvLog {
    [CmdletBinding()]
    param([string]$Path = '', [switch]$All, [double]$Timeout = [double]::PositiveInfinity)
    $log = [IntPtr]::Zero
    $status = $Native::QVOpenLog((Test-QvText $Path), [int](-not $All), [ref]$log)
    if ($status -ne 0) { throw (New-QvLogFailure 'opened' $status) }
    try {
        $record = [Activator]::CreateInstance($LogRecord)
        $waited = [Diagnostics.Stopwatch]::StartNew()
        while ($true) {
            $status = $Native::QVReadLog($log, [ref]$record)
            if ($status -lt 0) { throw (New-QvLogFailure 'read' (-$status)) }
            if ($status -eq 1) {
                ConvertFrom-QvRecord $record
                $waited.Restart()
            } elseif ($waited.Elapsed.TotalSeconds -ge $Timeout) {
                break
            } else {
                Start-Sleep -Milliseconds $Pause
            }
        }
    } finally {
        $Native::QVCloseLog($log)
    }
}

function New-QvLogFailure([string]$Action, [int]$Status) {
    $failure = New-Object InvalidOperationException "The log cannot be ${Action}: system error $Status"
    $failure.Data['Status'] = $Status
    $failure
}

function ConvertFrom-QvRecord($Record) {
    $text = { param($units, $length) [Runtime.InteropServices.Marshal]::PtrToStringUni($units, $length) }
    $letter = [string][char]($Record.level -band 0xFFFF)
    $level = $Levels.Keys | Where-Object { $Levels[$_] -ceq $letter }
    $time = $null
    try { $time = [DateTime]::FromFileTimeUtc($Record.time) } catch { $time = $null }
    $data = New-Object byte[] $Record.dataSize
    if ($data.Length -gt 0) {
        [Runtime.InteropServices.Marshal]::Copy($Record.data, $data, 0, $data.Length)
    }
    [PSCustomObject]@{
        Time = $time
        Level = if ($level) { $level } else { $letter }
        Process = $Record.processId
        Thread = $Record.threadId
        Session = if ($Record.sessionId -ne [uint32]::MaxValue) { $Record.sessionId }
        Source = & $text $Record.source $Record.sourceLength
        Line = $Record.line
        Text = & $text $Record.text $Record.textLength
        Label = & $text $Record.label $Record.labelLength
        Data = $data
        Missed = $Record.missed
        MadeAnew = $Record.madeAnew -ne 0
    }
}

Export-ModuleMember -Function Invoke-QvCommand, Get-QvPrinter, Get-QvSetting, Set-QvSetting,
    Set-QvDefault, Invoke-QvRequest, Set-QvField, Write-QvLog, Watch-QvLog
