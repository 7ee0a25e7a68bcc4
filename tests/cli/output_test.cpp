// Where data go, and what is left when that fails.

#include <unistd.h>

#include <csignal>

#include "program.h"

TEST_F(CommandLine, files_appear_only_when_they_are_complete) {
    ASSERT_EQ(shell("mkdir d && echo old >d/old && { seq 100000; echo x; } >x.csv"), 0);
    for (const char *file : {"d/new", "d/old"}) {
        EXPECT_EQ(run(kLowpass + "--strict x.csv -o " + file), 2);
        EXPECT_HAS(err, "x.csv:100001:1: \"x\"");
    }
    shell("cat d/old; ls -A d");
    EXPECT_EQ(out, "old\nold\n");
}

TEST_F(CommandLine, an_interrupted_run_leaves_nothing) {
    write("signal.sh", "mkfifo f; mkdir d\n\"$M\" " + kLowpass +
                           "f -o d/y & exec 3>f; seq 100000 >&3\n"  // more than a pipe holds: it is at work
                           "kill -$1 $!; exec 3>&-; wait $!; echo $?; ls -A d\n");
    for (const auto &[signal, wanted] : {std::pair{"KILL", "137\n"}, {"TERM", "143\n"}, {"HUP", "129\n"}}) {
        shell("rm -rf f d; timeout 60 sh signal.sh " + std::string(signal));
        EXPECT_EQ(out, wanted) << signal;
    }
    shell("rm -rf f d; timeout 60 sh -c 'trap \"\" HUP; set -- HUP; . ./signal.sh'");  // as nohup does
    EXPECT_EQ(out, "0\ny\n") << "an ignored signal stays ignored";
}

TEST_F(CommandLine, files_keep_their_mode_and_links) {
    write("links.sh",
          "umask 022; mkdir d; cd d; printf '1\\n2\\n' >a; chmod 640 a; ln -s a link; ln -s b dangling\n"
          "\"$M\" " +
              kLowpass + "link -o link; \"$M\" " + kLowpass + "a -o dangling; stat -c '%n %F %a' *");
    EXPECT_EQ(shell("sh links.sh"), 0) << err;
    EXPECT_EQ(out, "a regular file 640\nb regular file 644\ndangling symbolic link 777\nlink symbolic link 777\n");
    EXPECT_EQ(read("d/a"), filled("@\n@\n", filtered({1, 2})));
}

TEST_F(CommandLine, work_that_fails_ends_with_status_1) {
    ASSERT_EQ(shell("seq 100000 >x.csv; mkdir locked; chmod 555 locked"), 0);
    ASSERT_EQ(shell("ln -s /dev/full full.svg"), 0);
    expect_refusals(kLowpass + "x.csv ",
                    {{"-o /dev/full", "/dev/full: No space left on device"},
                     {">/dev/full", "standard output: No space left on device"},
                     {"-o nothere/y", "nothere/y: No such file or directory"},
                     {"-o /proc/y", "/proc/y: "},  // not even root can make a file there
                     {"--plot >/dev/full", ": No space left on device"},
                     {"--plot-script >/dev/full", ": No space left on device"},
                     {"--plot=full.svg -o y", ": No space left on device"}},
                    1);
    expect_refused("--version >/dev/full", "standard output: No space left on device", 1);
    if (geteuid() != 0) expect_refused(kLowpass + "x.csv -o locked/y", "locked/y: Permission denied", 1);
    EXPECT_EQ(shell("PATH=/nothere; $M " + kLowpass + "x.csv -o y --plot=y.svg"), 1);
    EXPECT_HAS(err, "gnuplot");
    EXPECT_TRUE(std::filesystem::exists("y")) << "the data do not wait for the picture";
    EXPECT_FALSE(std::filesystem::exists("y.svg"));
    EXPECT_EQ(run("fliter 2>/dev/full"), 2);
}

TEST_F(CommandLine, a_reader_that_has_seen_enough_ends_the_run) {
    ASSERT_EQ(shell("seq 100000 >x.csv; mkfifo f"), 0);
    write("pipe.sh", "\"$M\" " + kLowpass + "x.csv | head -n 1\nexit ${PIPESTATUS[0]}\n");
    EXPECT_EQ(shell("bash pipe.sh"), 128 + SIGPIPE);
    EXPECT_EQ(err, "");
    EXPECT_EQ(shell("trap '' PIPE; bash pipe.sh"), 1) << "an ignored signal stays ignored";
    EXPECT_EQ(err, "mensura: standard output: the reader has closed the pipe\n");
    EXPECT_EQ(shell("head -n 1 f & \"$M\" " + kLowpass + "x.csv -o f"), 1);
    EXPECT_EQ(err, "mensura: f: the reader has closed the pipe\n");
}

// A run ends with status 0 and the right result, or not with status 0; at some limits the transform alone has no memory.
TEST_F(CommandLine, without_memory_no_result_is_wrong) {
    ASSERT_EQ(shell("seq 65536 >x.csv && $M spectrum --rate 1 --window hanning x.csv >right"), 0) << err;
    EXPECT_EQ(
        shell("for kib in $(seq 10000 800 26000); do (ulimit -v $kib; $M spectrum --rate 1 --window hanning x.csv) "
              ">y 2>e && ! cmp -s y right && echo $kib; done; true"),
        0);
    EXPECT_EQ(out, "");
}
