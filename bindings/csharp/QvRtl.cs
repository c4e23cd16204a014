// The command interfaces of qv_rtl.dll for .NET, text commands and XML requests, and the shared log.
//
//     foreach (string printer in QvRtl.Printers())
//         Console.WriteLine(printer + ": " + QvRtl.Settings(printer)["Mode"]);
//     QvRtl.WriteLog("the nightly job begins", QvLogLevel.Information, "nightly_job");
//     foreach (QvLogRecord record in QvRtl.FollowLog())
//         Console.WriteLine(record.Time + " " + record.Level + " " + record.Text);
//
// All settings are those of the current user for a printer. The library must lie beside the program
// or in a folder of PATH. Any thread may call. Compiles from C# 5 on, for 64-bit processes.
using System;
using System.Collections.Generic;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using System.Xml;

/// <summary>A call of the library failed.</summary>
public class QvRtlException : Exception
{
    public QvRtlException(string message) : base(message) { }
}

/// <summary>A text command failed: the negative status, and the library's message.</summary>
public class QvCommandException : QvRtlException
{
    public QvCommandException(int status, string text) : base(text) { Status = status; }

    public int Status { get; private set; }
}

/// <summary>A response holds errors. The system code of the first error (0 without one), and the
/// whole response, which may hold answers too.</summary>
public class QvRequestException : QvRtlException
{
    public QvRequestException(int code, string text, XmlDocument response) : base(text)
    {
        Code = code;
        Response = response;
    }

    public int Code { get; private set; }
    public XmlDocument Response { get; private set; }
}

/// <summary>The log cannot be written or read: the system's code.</summary>
public class QvLogException : QvRtlException
{
    public QvLogException(string action, int status)
        : base("The log cannot be " + action + ": system error " + status)
    {
        Status = status;
    }

    public int Status { get; private set; }
}

/// <summary>The levels, with their letters in the log. Log: a message of the log about itself.</summary>
public enum QvLogLevel { Error = 'X', Warning = '*', Information = 'i', Trace = ' ', Log = '>' }

/// <summary>A record of the log.</summary>
public sealed class QvLogRecord
{
    /// <summary>UTC; null when the time of the record is not possible.</summary>
    public DateTime? Time { get; internal set; }
    public QvLogLevel Level { get; internal set; }
    public long Process { get; internal set; }
    public long Thread { get; internal set; }
    /// <summary>Null when the session is not known.</summary>
    public long? Session { get; internal set; }
    public string Source { get; internal set; }
    public int Line { get; internal set; }
    public string Text { get; internal set; }
    /// <summary>The name of the bytes in Data.</summary>
    public string Label { get; internal set; }
    public byte[] Data { get; internal set; }
    /// <summary>How many records before this one were overwritten before they could be read.</summary>
    public ulong Missed { get; internal set; }
    /// <summary>The log was deleted or replaced before this record.</summary>
    public bool MadeAnew { get; internal set; }
}

public static class QvRtl
{
    // Units of text that the first call of a command has room for.
    private const int FirstLength = 4096;
    // Milliseconds between two looks at a log that is followed.
    private const int Pause = 100;
    private const int InvalidParameter = 87;

    /// <summary>Makes a text command call of a word, keywords and values.</summary>
    public static string Command(params string[] items)
    {
        string line = string.Join("\t", Array.ConvertAll(items, Quoted));
        for (int length = FirstLength;;)
        {
            char[] buffer = new char[length + 1];
            int status = DoCommandW(line, buffer, length);
            string text = new string(buffer, 0, Array.IndexOf(buffer, '\0'));
            // A status does not tell the length of its message. A full buffer may hold a cut one.
            if (status < 0 && text.Length < length) throw new QvCommandException(status, text);
            if (status >= 0 && status <= length) return text;
            length = Math.Max(status, length * 2);
        }
    }

    /// <summary>The names of all printers of the product.</summary>
    public static string[] Printers()
    {
        string answer = Command("getorloprinters");
        return answer.Length == 0 ? new string[0] : answer.Split('\t');
    }

    /// <summary>The printer's main settings, by the names of the getdevmode command.</summary>
    public static Dictionary<string, string> Settings(string printer)
    {
        string[] items = Command("getdevmode", "printername", printer).Split('\t');
        if (items.Length % 2 != 0) throw new QvRtlException("A setting holds a tab");
        var settings = new Dictionary<string, string>();
        for (int i = 0; i < items.Length; i += 2) settings[items[i]] = items[i + 1];
        return settings;
    }

    /// <summary>Changes main settings, all or none. They are given as keywords and values of the
    /// setdevmode command. Returns the lines that name unknown keywords.</summary>
    public static string ChangeSettings(string printer, params string[] keywordsAndValues)
    {
        var items = new List<string> { "setdevmode", "printername", printer };
        items.AddRange(keywordsAndValues);
        return Command(items.ToArray());
    }

    /// <summary>Sets all of a printer's default behaviour at once; false when it cannot be
    /// set.</summary>
    public static bool SetDefaults(string printer, bool silent, bool run, bool useSerial,
                                   bool useDocumentName, string directory, string fileName,
                                   string program, string parameters, string message,
                                   string windowClass, string messageFormat)
    {
        return SetQVDefaultSetting(Text(printer), Flag(silent), Flag(run), Flag(useSerial),
                                   Flag(useDocumentName), Text(directory), Text(fileName),
                                   Text(program), Text(parameters), Text(message),
                                   Text(windowClass), Text(messageFormat)) == 1;
    }

    /// <summary>Carries out a request. Throws QvRequestException when the response holds
    /// errors.</summary>
    public static XmlDocument Request(string request)
    {
        string folder = Path.Combine(Path.GetTempPath(), Path.GetRandomFileName());
        Directory.CreateDirectory(folder);
        try
        {
            string requestFile = Path.Combine(folder, "request.xml");
            string responseFile = Path.Combine(folder, "response.xml");
            File.WriteAllText(requestFile, request, new UTF8Encoding(true));
            DoXMLW(Text(requestFile), Text(responseFile));
            if (!File.Exists(responseFile)) throw new QvRtlException("There is no response");
            var response = new XmlDocument();
            response.Load(responseFile);
            return Checked(response);
        }
        finally
        {
            Directory.Delete(folder, true);
        }
    }

    /// <summary>Changes fields by name, such as dmCopies or exOut.UseSerial. Returns the previous
    /// values. A field without a previous value was skipped: it is unknown, or the value does not
    /// fit.</summary>
    public static Dictionary<string, string> UpdatePrinter(
        string printer, IEnumerable<KeyValuePair<string, string>> values)
    {
        var document = new XmlDocument();
        XmlNode target = Add(Add(document, "update"), "printer");
        Add(target, "name").InnerText = printer;
        XmlNode devmode = Add(target, "devmode");
        foreach (var value in values) Field(devmode, value.Key, true).InnerText = value.Value;
        XmlNode answer = Request(document.OuterXml).SelectSingleNode("/response/printer/devmode");
        var previous = new Dictionary<string, string>();
        foreach (var value in values)
        {
            XmlNode field = Field(answer, value.Key, false);
            if (field != null) previous[value.Key] = field.InnerText;
        }
        return previous;
    }

    /// <summary>Writes a line into the log in force. <paramref name="line"/> is the line in the
    /// source, or 0. A text of more than 32,000 characters is cut; the text says so at its
    /// end.</summary>
    public static void WriteLog(string text, QvLogLevel level = QvLogLevel.Information,
                                string source = "dotnet", int line = 0)
    {
        int status = QVWriteLog((int)level, Text(source), line, Text(text));
        if (status == InvalidParameter)
            throw new ArgumentException("Such a level or source cannot be: " + level + ", " + source);
        if (status != 0) throw new QvLogException("written", status);
    }

    /// <summary>The records of a log, each once. The default is: new records of the log in force.
    /// Ends when no record has come for the time of <paramref name="timeout"/>, or when the token is
    /// cancelled. Without both it never ends. Enumerate it once.</summary>
    public static IEnumerable<QvLogRecord> FollowLog(
        string file = null, bool onlyNew = true, TimeSpan? timeout = null,
        CancellationToken token = default(CancellationToken))
    {
        LogHandle log;
        int status = QVOpenLog(Text(file ?? ""), onlyNew ? 1 : 0, out log);
        if (status != 0) throw new QvLogException("opened", status);
        return Follow(log, timeout, token);
    }

    private static IEnumerable<QvLogRecord> Follow(LogHandle log, TimeSpan? timeout,
                                                   CancellationToken token)
    {
        using (log)
        {
            var waited = System.Diagnostics.Stopwatch.StartNew();
            while (!token.IsCancellationRequested)
            {
                LogRecord record;
                int status = QVReadLog(log, out record);
                if (status < 0) throw new QvLogException("read", -status);
                if (status == 1)
                {
                    yield return Shown(record);
                    waited.Restart();
                }
                else if (timeout != null && waited.Elapsed >= timeout)
                {
                    yield break;
                }
                else
                {
                    token.WaitHandle.WaitOne(Pause);
                }
            }
        }
    }

    // Its pointers belong to the log, and are valid until the next call.
    private static QvLogRecord Shown(LogRecord record)
    {
        var shown = new QvLogRecord();
        try
        {
            shown.Time = DateTime.FromFileTimeUtc((long)record.time);
        }
        catch (ArgumentOutOfRangeException)
        {
        }
        shown.Level = (QvLogLevel)record.level;
        shown.Process = record.processId;
        shown.Thread = record.threadId;
        if (record.sessionId != uint.MaxValue) shown.Session = record.sessionId;
        shown.Source = Marshal.PtrToStringUni(record.source, record.sourceLength);
        shown.Line = record.line;
        shown.Text = Marshal.PtrToStringUni(record.text, record.textLength);
        shown.Label = Marshal.PtrToStringUni(record.label, record.labelLength);
        shown.Data = new byte[record.dataSize];
        if (record.dataSize > 0) Marshal.Copy(record.data, shown.Data, 0, record.dataSize);
        shown.Missed = record.missed;
        shown.MadeAnew = record.madeAnew != 0;
        return shown;
    }

    private static XmlDocument Checked(XmlDocument response)
    {
        XmlNodeList errors = response.SelectNodes("/response/message/error");
        if (errors.Count == 0) return response;
        int code;
        int.TryParse(((XmlElement)errors[0]).GetAttribute("W32Code"), out code);
        var text = new StringBuilder();
        foreach (XmlElement error in errors)
            text.AppendLine(error.InnerText + " " + error.GetAttribute("W32Msg"));
        throw new QvRequestException(code, text.ToString().TrimEnd(), response);
    }

    // The field's element below a devmode; made when it is missing, or null.
    private static XmlNode Field(XmlNode devmode, string name, bool make)
    {
        XmlNode node = devmode;
        foreach (string part in name.Split('.'))
        {
            if (node == null) return null;
            XmlNode parent = node;
            node = parent[part];
            if (node == null && make) node = Add(parent, part);
        }
        return node;
    }

    private static XmlNode Add(XmlNode parent, string name)
    {
        XmlDocument document = parent as XmlDocument ?? parent.OwnerDocument;
        return parent.AppendChild(document.CreateElement(name));
    }

    // The item in the form that a command line needs: a tab ends an item.
    private static string Quoted(string item)
    {
        Text(item);
        bool plain = item.IndexOf('\t') < 0 && !item.StartsWith("\"", StringComparison.Ordinal);
        return plain ? item : "\"" + item.Replace("\"", "\"\"") + "\"";
    }

    // A text for the library, where a zero character would end it.
    private static string Text(string text)
    {
        if (text.IndexOf('\0') >= 0) throw new ArgumentException("The text holds a zero character");
        return text;
    }

    private static byte Flag(bool flag) { return flag ? (byte)1 : (byte)0; }

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int DoCommandW(string command, [Out] char[] buffer, int length);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int DoXMLW(string requestFile, string responseFile);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int SetQVDefaultSetting(
        string printerName, byte dialogMode, byte runEnabled, byte useSerial, byte useDocumentName,
        string saveDirectory, string saveFileName, string program, string programParameters,
        string messageName, string messageWindowClass, string messageFormat);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int QVWriteLog(int level, string source, int line, string text);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int QVOpenLog(string file, int onlyNew, out LogHandle log);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern int QVReadLog(LogHandle log, out LogRecord record);

    [DllImport("qv_rtl", CharSet = CharSet.Unicode, ExactSpelling = true,
               CallingConvention = CallingConvention.Cdecl)]
    private static extern void QVCloseLog(IntPtr log);

    // Closes the log, at the latest when the object is collected.
    private sealed class LogHandle : SafeHandle
    {
        public LogHandle() : base(IntPtr.Zero, true) { }

        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }

        protected override bool ReleaseHandle()
        {
            QVCloseLog(handle);
            return true;
        }
    }

    // QVLogRecord of log_record_c.h.
    [StructLayout(LayoutKind.Sequential)]
    private struct LogRecord
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
}
