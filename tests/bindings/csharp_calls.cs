// Every call of QvRtl.cs, one line printed for each: csharp_calls.exe PRINTER
using System;
using System.Collections.Generic;
using System.Threading;

public static class CSharpCalls
{
    private const string Fancy = "\uD83D\uDCE0 \u0100 \u00E9";

    public static int Main(string[] arguments)
    {
        string printer = arguments[0];
        Show(string.Join("|", QvRtl.Printers()));
        Show(QvRtl.Settings(printer)["Mode"]);
        Show(QvRtl.ChangeSettings(printer, "mode", "1", "defaultsavedir", Fancy + "\t\""));
        Show(QvRtl.ChangeSettings(printer, Unknown(100)).Length.ToString());
        Status(() => QvRtl.Settings(Fancy));
        Status(() => QvRtl.Settings(new string('x', 4096)));
        Show(QvRtl.Request("<query><global/></query>").OuterXml.Length > 0 ? "answered" : "");
        var copies = new Dictionary<string, string> { { "dmCopies", "3" }, { "exOut.UseSerial", "False" } };
        var previous = QvRtl.UpdatePrinter(printer, copies);
        Show(previous["dmCopies"] + " " + previous["exOut.UseSerial"]);
        try
        {
            QvRtl.UpdatePrinter(Fancy, copies);
        }
        catch (QvRequestException failure)
        {
            Show(failure.Code.ToString());
        }
        Show(QvRtl.SetDefaults(printer, true, false, true, false, Fancy, "a.tif", "", "", "", "", "")
                 ? "set" : "refused");
        Show(QvRtl.SetDefaults(Fancy, true, false, true, false, Fancy, "a.tif", "", "", "", "", "")
                 ? "set" : "refused");
        Log();
        return 0;
    }

    private static void Log()
    {
        TimeSpan soon = TimeSpan.FromSeconds(1);
        var log = QvRtl.FollowLog(null, true, soon);
        QvRtl.WriteLog(Fancy, QvLogLevel.Warning, "a_test", 7);
        foreach (QvLogRecord r in log)
        {
            long self = System.Diagnostics.Process.GetCurrentProcess().Id;
            bool now = DateTime.UtcNow - r.Time < TimeSpan.FromMinutes(1);
            Show(now + " " + r.Level + " " + (r.Process == self) + " " + r.Session + " " + r.Source + " " +
                 r.Line + " " + (r.Text == Fancy) + " " + r.Label.Length + r.Data.Length + r.Missed + r.MadeAnew);
            if (r.Line < 8) QvRtl.WriteLog("", QvLogLevel.Error, "a_test", 8);
        }
        var stop = new CancellationTokenSource();
        stop.Cancel();
        foreach (QvLogRecord r in QvRtl.FollowLog(null, false, null, stop.Token)) Show(r.Text);
        foreach (string file in new[] { "/no/such.log", "/etc/passwd" })
        {
            try
            {
                QvRtl.FollowLog(file);
            }
            catch (QvLogException failure)
            {
                Show(failure.Message);
            }
        }
        try
        {
            QvRtl.WriteLog("text", QvLogLevel.Log);
        }
        catch (ArgumentException failure)
        {
            Show(failure.Message);
        }
    }

    private static string[] Unknown(int count)
    {
        var items = new List<string>();
        for (int i = 0; i < count; ++i)
        {
            items.Add("nothing" + i.ToString("0000") + Fancy);
            items.Add("1");
        }
        return items.ToArray();
    }

    private static void Status(Action action)
    {
        try
        {
            action();
            Show("no error");
        }
        catch (QvCommandException failure)
        {
            Show(failure.Status + " " + failure.Message.Length);
        }
    }

    private static void Show(string text) { Console.Out.WriteLine(text); }
}
