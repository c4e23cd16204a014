// A tool in C#: lists all printers, sets the number of copies of one, shows what it was before.
//
//     settings_tool PRINTER COPIES
using System;
using System.Collections.Generic;
using System.Xml;

public static class SettingsTool
{
    public static int Main(string[] arguments)
    {
        if (arguments.Length != 2)
        {
            Console.Error.WriteLine("usage: settings_tool PRINTER COPIES");
            return 2;
        }
        try
        {
            XmlDocument all = QvRtl.Request("<query><printer/></query>");
            foreach (XmlNode name in all.SelectNodes("/response/printer/name"))
                Console.WriteLine(name.InnerText);
            var wanted = new Dictionary<string, string> { { "dmCopies", arguments[1] } };
            var previous = QvRtl.UpdatePrinter(arguments[0], wanted);
            if (!previous.ContainsKey("dmCopies"))
                throw new QvRtlException("dmCopies cannot be " + arguments[1]);
            Console.WriteLine("dmCopies was " + previous["dmCopies"]);
            Console.WriteLine("Mode is " + QvRtl.Settings(arguments[0])["Mode"]);
            return 0;
        }
        catch (QvRtlException failure)
        {
            Console.Error.WriteLine(failure.Message);
            return 1;
        }
    }
}
