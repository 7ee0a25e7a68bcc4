// Where data go, and what is left when that fails.

#include <unistd.h>

#include "program.h"

namespace {

TEST_F(Tool, files_appear_only_when_they_are_complete) {
    ASSERT_EQ(shell("mkdir d && echo old >d/old && { seq 100000; echo x; } >x.csv"), 0);
    for (const char *file : {"d/new", "d/old"}) {
        EXPECT_EQ(run(kLowpass + "x.csv -o " + file), 2);
        EXPECT_NE(err.find("x.csv:100001:1: \"x\""), std::string::npos) << err;
    }
    shell("cat d/old; ls -A d");
    EXPECT_EQ(out, "old\nold\n");
}

TEST_F(Tool, an_interrupted_run_leaves_nothing) {
    write("signal.sh", "mkfifo f; mkdir d\n\"$M\" " + kLowpass +
                           "f -o d/y & exec 3>f; seq 100000 >&3\n"  // more than a pipe holds: it is at work
                           "kill -$1 $!; exec 3>&-; wait $!; echo $?; ls -A d\n");
    for (const auto &[signal, wanted] : {std::pair{"KILL", "137\n"}, {"TERM", "143\n"}, {"HUP", "129\n"}}) {
        shell("rm -rf f d; M=\"$M\" timeout 60 sh signal.sh " + std::string(signal));
        EXPECT_EQ(out, wanted) << signal;
    }
    shell("rm -rf f d; export M; timeout 60 sh -c 'trap \"\" HUP; set -- HUP; . ./signal.sh'");  // as nohup does
    EXPECT_EQ(out, "0\ny\n") << "an ignored signal stays ignored";
}

TEST_F(Tool, files_keep_their_mode_and_links) {
    write("links.sh",
          "umask 022; mkdir d; cd d; printf '1\\n2\\n' >a; chmod 640 a; ln -s a link; ln -s b dangling\n"
          "\"$M\" " +
              kLowpass + "link -o link; \"$M\" " + kLowpass + "a -o dangling; stat -c '%n %F %a' *");
    EXPECT_EQ(shell("M=\"$M\" sh links.sh"), 0) << err;
    EXPECT_EQ(out, "a regular file 640\nb regular file 644\ndangling symbolic link 777\nlink symbolic link 777\n");
    EXPECT_EQ(read("d/a"), filled("@\n@\n", filtered({1, 2})));
}

TEST_F(Tool, work_that_fails_ends_with_status_1) {
    ASSERT_EQ(shell("seq 100000 >x.csv; mkdir locked; chmod 555 locked"), 0);
    expect_refused(kLowpass + "x.csv -o /dev/full", "/dev/full: No space left on device", 1);
    expect_refused(kLowpass + "x.csv >/dev/full", "standard output: No space left on device", 1);
    expect_refused("--version >/dev/full", "standard output: No space left on device", 1);
    expect_refused(kLowpass + "x.csv -o nothere/y", "nothere/y: No such file or directory", 1);
    expect_refused(kLowpass + "x.csv -o /proc/y", "/proc/y: ", 1);  // not even root can make a file there
    ASSERT_EQ(shell("ln -s /dev/full full.svg"), 0);
    for (const char *picture : {"--plot >/dev/full", "--plot-script >/dev/full", "--plot=full.svg -o y"})
        expect_refused(kLowpass + "x.csv " + picture, ": No space left on device", 1);
    if (geteuid() != 0) expect_refused(kLowpass + "x.csv -o locked/y", "locked/y: Permission denied", 1);
    write("pipe.sh", "\"$M\" " + kLowpass + "x.csv | head -n 1\nexit ${PIPESTATUS[0]}\n");
    EXPECT_EQ(shell("M=\"$M\" bash pipe.sh"), 1);
    EXPECT_EQ(err, "mensura: standard output: the reader has closed the pipe\n");
    EXPECT_EQ(shell("PATH=/nothere; $M " + kLowpass + "x.csv -o y --plot=y.svg"), 1);
    EXPECT_NE(err.find("gnuplot"), std::string::npos) << err;
    EXPECT_TRUE(exists("y") && !exists("y.svg")) << "the data do not wait for the picture";
    EXPECT_EQ(run("fliter 2>/dev/full"), 2);
}

}  // namespace
