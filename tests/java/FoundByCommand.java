import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.math.BigDecimal;
import java.math.RoundingMode;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import orva.FindResult;
import orva.FindSettings;
import orva.FoundObject;

/**
 * What orva find finds, rounded to thousandths: x, y, radius, score and coverage of each object.
 */
record FoundByCommand(
    String radius, String polarity, String confidence, List<List<String>> objects) {
  static FoundByCommand in(Path image, FindSettings s) throws IOException, InterruptedException {
    List<String> command = command("find", s);
    command.addAll(List.of("--format", "json", image.toString()));
    Program.Result result = Program.run(command);
    assertEquals(0, result.status(), () -> command + " " + result.err());
    return of(result.out());
  }

  /** A subcommand that finds objects, with these settings. */
  static List<String> command(String subcommand, FindSettings s) {
    List<String> command = new ArrayList<>(List.of(System.getProperty("orva.command"), subcommand,
        "--quiet", "--min-score", "" + s.minScore()));
    if (s.radius() != null)
      command.addAll(List.of("--radius", "" + s.radius()));
    if (s.minRadius() != null)
      command.addAll(List.of("--radius", s.minRadius() + ":" + s.maxRadius()));
    if (s.polarity() != null)
      command.addAll(List.of("--polarity", s.polarity().name().toLowerCase(Locale.ROOT)));
    return command;
  }

  private static FoundByCommand of(String json) {
    int settings = json.indexOf("\"settings\"");
    List<List<String>> objects = new ArrayList<>();
    String text = json.substring(json.indexOf("\"objects\""));
    for (String object : text.split("\\{")) {
      if (object.contains("\"x\""))
        objects.add(List.of(number(object, "x"), number(object, "y"), number(object, "radius"),
            number(object, "score"), number(object, "coverage")));
    }
    String used = json.substring(settings).replaceFirst("(?s)\"objects\".*", "");
    return new FoundByCommand(number(used, "radius"), value(used, "polarity").replace("\"", ""),
        number(used, "confidence"), objects);
  }

  /** The same of a result. */
  static FoundByCommand of(FindResult result) {
    List<List<String>> objects = new ArrayList<>();
    for (FoundObject o : result.objects())
      objects.add(List.of(rounded(o.x()), rounded(o.y()), rounded(o.radius()), rounded(o.score()),
          rounded(o.coverage())));
    return new FoundByCommand(rounded(result.used().radius()),
        result.used().polarity().name().toLowerCase(Locale.ROOT),
        rounded(result.used().confidence()), objects);
  }

  static String rounded(double value) {
    return new BigDecimal(value).setScale(3, RoundingMode.HALF_EVEN).toString();
  }

  private static String number(String json, String key) {
    return new BigDecimal(value(json, key)).setScale(3).toString();
  }

  private static String value(String json, String key) {
    Matcher matcher = Pattern.compile("\"" + key + "\": ([^,\\s}]+)").matcher(json);
    assertTrue(matcher.find(), key + " in " + json);
    return matcher.group(1);
  }
}
