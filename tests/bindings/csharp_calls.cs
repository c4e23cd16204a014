// Every call of QvRtl.cs, one line printed for each: csharp_calls.exe PRINTER
using System;
using System.Collections.Generic;

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
        return 0;
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
